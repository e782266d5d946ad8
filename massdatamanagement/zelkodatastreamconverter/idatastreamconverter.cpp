#include "idatastreamconverter.h"

namespace zelkodatastreamconverter {

IDataStreamConverter::~IDataStreamConverter() = default;

} // namespace zelkodatastreamconverter
