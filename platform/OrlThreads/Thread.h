// A system thread with a name. It is created suspended and runs only once
// started; Thread::current() names the Thread object of the calling thread.
//
//   OrlThreads::Thread worker("Fetch", [&] { fetch(); });
//   worker.start();          // creates (suspended) and resumes
//   ...
//   worker.join();
//
// A body that throws ends its thread; the exception goes no further. Calls
// can be queued to a thread to run while it waits (see queueCall).
// Destroying a Thread that was started waits for it to finish.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace OrlThreads {

class Thread {
public:
    enum class Priority { lowest, belowNormal, normal, aboveNormal, highest };

    explicit Thread(std::string name, std::function<void()> body = {});
    virtual ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // Creates the system thread, suspended. "Error creating thread".
    void create();
    // Lets the thread run, creating it first if need be. "Error starting thread".
    void start();
    // "Error setting thread priority". Raising a priority may need privileges.
    void setPriority(Priority priority);
    // Waits for the thread to finish. "Error waiting on thread to finish".
    void join();
    // Ends the thread wherever it is, then waits for it. Locks it holds
    // and memory it owns stay as they are: a last resort. "Error killing thread".
    void kill();

    // Queues a call to run on this thread during its next wait on a
    // WaitableEvent (or, on Windows, any alertable wait), which then ends
    // with `alerted`. Calls queued to a thread that never waits never run.
    // "Error queueing a call to thread".
    void queueCall(std::function<void()> call);

    const std::string& name() const { return name_; }
    bool created() const;
    bool finished() const;

    // The Thread object of the calling thread; null on threads not made here.
    static Thread* current();

protected:
    // The thread's work; by default the body given to the constructor.
    virtual void run();

private:
    struct Native;
    static void entry(Thread* self);

    std::string name_;
    std::function<void()> body_;
    std::unique_ptr<Native> native_;
};

}  // namespace OrlThreads
