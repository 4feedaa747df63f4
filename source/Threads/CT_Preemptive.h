#pragma once
#include <memory>
#include <string>

#include "Threads/ForkRecord.h"

/** Base of a task with a thread of its own. Operate is its body, Completion runs on the main thread, after which the
    object is deleted there. Start forks a task that is wholly made: a constructor that started its own thread would let
    Operate run on an object whose last lines are not written yet.
    Errors   the result is the first failure of Operate and Completion. Start answers 0, and destroys the task, when no
             thread can be had. */
class CT_Task {
public:
    virtual ~CT_Task() = default;
    CT_Task(const CT_Task&) = delete;
    CT_Task& operator=(const CT_Task&) = delete;

    [[nodiscard]] const std::string& Name() const noexcept { return i_name; }

protected:
    explicit CT_Task(const char* nameZ) : i_name(nameZ) {}
    virtual OSErr Operate(OSErr err) = 0;
    virtual OSErr Completion(OSErr err) { return err; }
    static ForkID StartAs(ForkKind kind, std::unique_ptr<CT_Task> taskP);

private:
    const std::string i_name;
};

/** A task that must never touch the main thread's objects. */
class CT_Preemptive : public CT_Task {
public:
    static ForkID Start(std::unique_ptr<CT_Preemptive> taskP) {
        return StartAs(ForkKind::kPreemptive, std::move(taskP));
    }

protected:
    explicit CT_Preemptive(const char* nameZ = "CT_Preemptive") : CT_Task(nameZ) {}
};
