#pragma once

#include <QString>

/// Base of every object that a library loaded at run time hands out (see
/// CfgCenter::CreateDllInstanceByFileName()). Users down-cast it (dynamic_cast) to the
/// interface they expect, for example an audio transformer.
///
/// A plugin library exports one C function with this name and signature:
///
///   extern "C" ZELKO_PLUGIN_EXPORT IDllInstance* zelkoCreateDllInstance(char const* name);
///
/// name is the UTF-8, NUL-terminated "second name" the caller asked for (empty for the
/// library's default object). It returns a new object, or null when the library offers no
/// object of that name. The object is deleted through its virtual destructor by
/// CfgCenter::DestroyDllInstanceByPointer(), before the library is unloaded.
class IDllInstance
{
public:
    IDllInstance() = default;
    IDllInstance(IDllInstance const&) = delete;
    IDllInstance& operator=(IDllInstance const&) = delete;
    virtual ~IDllInstance();

    /// A short name of the object's class, for traces ("AudioTransformer").
    virtual QString GetInstanceName() const = 0;
};

/// The factory every plugin exports, and its symbol name.
using ZelkoCreateDllInstanceFunction = IDllInstance* (*)(char const* name);
#define ZELKO_CREATE_DLL_INSTANCE_SYMBOL "zelkoCreateDllInstance"
#define ZELKO_PLUGIN_EXPORT __attribute__((visibility("default")))
