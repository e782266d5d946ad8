#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <appstartup/threadinghelper.h>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace {

/// An application object for one test; the helper's behaviour depends on whether one exists.
class Application
{
public:
    Application() : m_app(m_argc, m_argv) {}
    QCoreApplication& app() { return m_app; }

private:
    int m_argc = 1;
    char m_name[8] = "test";
    char* m_argv[2] = {m_name, nullptr};
    QCoreApplication m_app;
};

/// Runs work on a worker thread while the application's event loop turns, then joins it.
void runOnWorker(Application& application, std::function<void()> work)
{
    std::unique_ptr<QThread> worker(QThread::create(std::move(work)));
    QObject::connect(worker.get(), &QThread::finished, &application.app(), &QCoreApplication::quit);
    QTimer::singleShot(10000, &application.app(), &QCoreApplication::quit); // never hang
    worker->start();
    application.app().exec();
    ASSERT_TRUE(worker->wait(10000));
}

} // namespace

TEST(ThreadingHelper, WithoutApplicationRunsOnTheCallingThread)
{
    ASSERT_EQ(QCoreApplication::instance(), nullptr);
    QThread* ranOn = nullptr;
    QThread worker;
    QObject::connect(&worker, &QThread::started, [&ranOn] {
        EXPECT_TRUE(ThreadingHelper::IsMainThread()) << "no application: every thread counts";
        ThreadingHelper::RunInMainThread([&ranOn] { ranOn = QThread::currentThread(); });
        QThread::currentThread()->quit();
    });
    worker.start();
    ASSERT_TRUE(worker.wait(10000));
    EXPECT_EQ(ranOn, &worker);
}

TEST(ThreadingHelper, FromAWorkerRunsOnTheApplicationThreadWaitsAndRethrows)
{
    Application application;
    QThread* ranOn = nullptr;
    bool finishedBeforeReturn = false;
    bool workerIsMain = true;
    bool caught = false;
    runOnWorker(application, [&] {
        workerIsMain = ThreadingHelper::IsMainThread();
        bool done = false;
        ThreadingHelper::RunInMainThread([&] {
            QThread::msleep(20);
            ranOn = QThread::currentThread();
            done = true;
        });
        finishedBeforeReturn = done;
        try {
            ThreadingHelper::RunInMainThread([] { throw std::runtime_error("work failed"); });
        } catch (std::runtime_error const& e) {
            caught = QByteArray(e.what()) == "work failed";
        }
    });
    EXPECT_EQ(ranOn, application.app().thread());
    EXPECT_TRUE(finishedBeforeReturn) << "the caller waits until the work is done";
    EXPECT_FALSE(workerIsMain);
    EXPECT_TRUE(caught) << "an exception comes back to the caller";
}

TEST(ThreadingHelper, OnTheApplicationThreadRunsDirectly)
{
    Application application;
    EXPECT_TRUE(ThreadingHelper::IsMainThread());
    int runs = 0;
    ThreadingHelper::RunInMainThread([&runs] { ++runs; }); // no event loop needed
    EXPECT_EQ(runs, 1);
}
