// A library without the plugin factory, to see the loader refuse it.

extern "C" __attribute__((visibility("default"))) int zelkoSomethingElse()
{
    return 42;
}
