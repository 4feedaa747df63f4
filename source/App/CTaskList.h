#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Threads/CThreadHost.h"

enum class TaskID : std::uint64_t {};

/** One line of the list of tasks, as it stood at one moment. */
struct TaskRow {
    TaskID id{0};
    std::string name;
    std::string text = {};        // what it does now; empty: it has not said
    long doneL = 0, totalL = 0;   // steps; a total of 0: nobody knows how many there are
    bool cancelledB = false;      // its end was asked for, and has not come yet
};

/** What works in the background, and how far it is: a line for every CTaskView that lives, in the order of their birth.
    Threads  any. Whoever changes a line posts one call to the main thread (CAppWindows::TasksChanged) for all that
             changes until Rows is asked again.
    Owner    CApp. A view may outlive it. */
class CTaskList {
public:
    CTaskList();
    ~CTaskList();
    CTaskList(const CTaskList&) = delete;
    CTaskList& operator=(const CTaskList&) = delete;

    /** `loop` is where the first change is told. */
    [[nodiscard]] std::unique_ptr<CTaskView> Open(CMainLoop& loop, std::string_view name);
    [[nodiscard]] std::vector<TaskRow> Rows();
    /** Asks for the end of a task: what it hung on its cancel signal runs on the caller's thread. Nothing for a task
        that has ended. */
    void Cancel(TaskID id);

private:
    class View;
    struct State;
    const std::shared_ptr<State> i_stateRef;
};
