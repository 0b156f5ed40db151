#include "platform/OrlThreads/Thread.h"

namespace OrlThreads {

namespace {
thread_local Thread* currentThread = nullptr;
}

void Thread::run() {
    if (body_)
        body_();
}

Thread* Thread::current() {
    return currentThread;
}

// Called on the new thread once it has been resumed.
void Thread::entry(Thread* self) {
    currentThread = self;
    self->run();
}

}  // namespace OrlThreads
