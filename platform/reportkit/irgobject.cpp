#include "irgobject.h"

namespace REPORTKIT {

IRGObject::~IRGObject() = default;

} // namespace REPORTKIT
