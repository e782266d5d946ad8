#include "threadinghelper.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>
#include <exception>

bool ThreadingHelper::IsMainThread()
{
    QCoreApplication const* const application = QCoreApplication::instance();
    return !application || QThread::currentThread() == application->thread();
}

void ThreadingHelper::RunInMainThread(std::function<void()> const& work)
{
    QCoreApplication* const application = QCoreApplication::instance();
    if (!application || QThread::currentThread() == application->thread()) {
        work();
        return;
    }
    // An exception must not unwind the main thread's event loop: carry it back.
    std::exception_ptr failure;
    QMetaObject::invokeMethod(
        application,
        [&work, &failure]() {
            try {
                work();
            } catch (...) {
                failure = std::current_exception();
            }
        },
        Qt::BlockingQueuedConnection);
    if (failure) {
        std::rethrow_exception(failure);
    }
}
