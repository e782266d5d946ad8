// The audio export library's entry point: the default object is the audio transformer.

#include "audiotransformer.h"

extern "C" ZELKO_PLUGIN_EXPORT IDllInstance* zelkoCreateDllInstance(char const* name)
{
    if (name && *name) {
        return nullptr; // the library offers one object only
    }
    return new audiofileexport::AudioTransformer;
}
