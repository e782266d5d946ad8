#pragma once

#include <functional>

/// Runs work on the application's main thread.
class ThreadingHelper
{
public:
    /// Runs work on the thread of the QCoreApplication, waiting until it is done, when an
    /// application object exists and the caller is another thread; otherwise (no
    /// application, or already on its thread) runs it directly. The main thread must be
    /// processing events (running its event loop) for a call from another thread to return.
    static void RunInMainThread(std::function<void()> const& work);

    /// True when the caller is on the application's thread, or there is no application.
    static bool IsMainThread();
};
