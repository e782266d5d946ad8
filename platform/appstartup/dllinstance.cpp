#include "dllinstance.h"

IDllInstance::~IDllInstance() = default;
