#pragma once

#include <appstartup/dllinstance.h>

/// The interface of the test plugin's objects: a counter that tells the test when it dies.
class CounterInstance : public IDllInstance
{
public:
    virtual int Next() = 0;
    /// The second name the object was made for.
    virtual QString SecondName() const = 0;
    /// *flag becomes true when the object is destroyed.
    virtual void SetDeathFlag(bool* flag) = 0;
};
