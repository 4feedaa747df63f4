#include "App/CTaskList.h"

#include <map>
#include <mutex>

#include "App/CApp.h"
#include "App/CAppWindows.h"

struct CTaskList::State {
    struct Line {
        TaskRow row;
        std::shared_ptr<CCancelSignal> cancelP;
    };
    std::mutex lock;   // guards the rest
    std::map<TaskID, Line> lines;
    std::uint64_t lastL = 0;
    bool toldB = false;   // the main thread is to look, and has not yet

    /** Tells the main thread unless it knows. No lock is held. */
    void Touch(CMainLoop& loop) {
        {
            const std::scoped_lock guard(lock);
            if (std::exchange(toldB, true)) return;
        }
        loop.Post([] {
            if (gApp != nullptr) gApp->Windows().TasksChanged();
        });
    }
};

class CTaskList::View final : public CTaskView {
public:
    View(std::shared_ptr<State> stateRef, TaskID id, std::shared_ptr<CCancelSignal> cancelP)
        : CTaskView(std::move(cancelP)), i_stateRef(std::move(stateRef)), i_id(id) {}
    ~View() override {
        {
            const std::scoped_lock guard(i_stateRef->lock);
            i_stateRef->lines.erase(i_id);
        }
        Tell();
    }
    void SetText(const std::string& text) override {
        Change([&](TaskRow& row) { row.text = text; });
    }
    void SetSteps(long doneL, long totalL) override {
        Change([&](TaskRow& row) {
            row.totalL = std::max(0L, totalL);
            row.doneL = std::clamp(doneL, 0L, row.totalL);
        });
    }

private:
    template <class Work>
    void Change(Work&& work) {
        {
            const std::scoped_lock guard(i_stateRef->lock);
            if (const auto it = i_stateRef->lines.find(i_id); it != i_stateRef->lines.end()) work(it->second.row);
        }
        Tell();
    }
    /** Without an application nobody looks any more. */
    void Tell() {
        (void)CThreadHost::With([this](CThreadHost& host) { i_stateRef->Touch(host.MainLoop()); });
    }

    const std::shared_ptr<State> i_stateRef;
    const TaskID i_id;
};

CTaskList::CTaskList() : i_stateRef(std::make_shared<State>()) {}

CTaskList::~CTaskList() = default;

std::unique_ptr<CTaskView> CTaskList::Open(CMainLoop& loop, std::string_view name) {
    auto cancelP = std::make_shared<CCancelSignal>();
    TaskID id{0};
    {
        const std::scoped_lock guard(i_stateRef->lock);
        id = TaskID{++i_stateRef->lastL};
        i_stateRef->lines[id] = {{.id = id, .name = std::string(name)}, cancelP};
    }
    i_stateRef->Touch(loop);
    return std::make_unique<View>(i_stateRef, id, std::move(cancelP));
}

std::vector<TaskRow> CTaskList::Rows() {
    const std::scoped_lock guard(i_stateRef->lock);
    i_stateRef->toldB = false;
    std::vector<TaskRow> rows;
    rows.reserve(i_stateRef->lines.size());
    for (const auto& [id, line] : i_stateRef->lines) {
        rows.push_back(line.row);
        rows.back().cancelledB = line.cancelP->IsCancelled();
    }
    return rows;
}

void CTaskList::Cancel(TaskID id) {
    std::shared_ptr<CCancelSignal> cancelP;
    {
        const std::scoped_lock guard(i_stateRef->lock);
        if (const auto it = i_stateRef->lines.find(id); it != i_stateRef->lines.end()) cancelP = it->second.cancelP;
    }
    if (cancelP != nullptr) cancelP->Cancel();   // its hooks may end the view
}
