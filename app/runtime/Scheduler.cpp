// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Scheduler.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace sorakaze {

class Scheduler::Run {
  public:
    enum class State { Ready, Running, Waiting, Blocked, Ended };

    std::function<void()> body;
    std::thread thread;

    // Touched by the baton's holder only.
    State state = State::Ready;
    bool killed = false;
    const FunctionRef<bool()>* condition = nullptr;
    const std::chrono::nanoseconds* recheckAt = nullptr;
    std::exception_ptr error;  ///< what the condition threw at its last look
    Blocking blocking = Blocking::ClockStopped;
    std::stop_source stop{std::nostopstate};  ///< of the blocking call

    // Guarded by Scheduler::mutex_.
    std::condition_variable wake;
    Role role = Role::None;
    bool returned = false;  ///< the blocking call is over
};

namespace {

/// The calling thread's run, whichever scheduler it belongs to. A thread belongs to one at a time.
thread_local Scheduler::Run* ownRun = nullptr;

/// Yield reads the clock at every so many calls: reading it costs more than the rest.
constexpr unsigned kYieldsPerClockRead = 32;

}  // namespace

Scheduler::Scheduler(Clock& clock, std::function<void(std::exception_ptr)> onUncaught)
    : clock_(clock), onUncaught_(std::move(onUncaught)), main_(std::make_shared<Run>()) {
    assert(!ownRun);
    ownRun = main_.get();
    current_ = ownRun;
    main_->state = Run::State::Running;
    lastCheck_ = clock_.Tick();
}

Scheduler::~Scheduler() {
    EndThreads();
    ownRun = nullptr;
}

void Scheduler::EndThreads() {
    assert(OnMainThread());
    closing_ = true;
    for (const auto& run : live_) Kill(*run);
    WaitWhile([this] { return !live_.empty(); });
    JoinFinished();
}

Scheduler::Run& Scheduler::Self() const {
    AssertBaton();
    return *ownRun;
}

bool Scheduler::HoldsBaton() const {
    return ownRun && ownRun == current_;
}

bool Scheduler::OnMainThread() const {
    return ownRun == main_.get();
}

bool Scheduler::HasEnded(const Run& run) {
    return run.killed || run.state == Run::State::Ended;
}

void Scheduler::CheckKilled(const Run& run) {
    // A destructor that yields while the stack unwinds must not throw a second time.
    if (run.killed && std::uncaught_exceptions() == 0) throw ThreadKilled();
}

std::shared_ptr<Scheduler::Run> Scheduler::Start(std::function<void()> body) {
    AssertBaton();
    JoinFinished();
    auto run = std::make_shared<Run>();
    run->body = std::move(body);
    run->killed = closing_;
    run->thread = std::thread([this, run] { Enter(run); });
    live_.push_back(run);
    ready_.push_back(run.get());
    return run;
}

void Scheduler::Enter(const std::shared_ptr<Run>& run) {
    ownRun = run.get();
    AwaitRole(*run);
    run->state = Run::State::Running;
    current_ = run.get();
    if (!run->killed) {
        try {
            run->body();
        } catch (const ThreadKilled&) {
        } catch (...) {
            // Reporting it can fail as well, or be killed: the application goes on.
            try {
                onUncaught_(std::current_exception());
            } catch (...) {
            }
        }
    }
    run->body = nullptr;
    run->state = Run::State::Ended;
    finished_.push_back(std::move(run->thread));
    std::erase(live_, run);
    PassBaton();
}

void Scheduler::JoinFinished() {
    for (auto& thread : std::exchange(finished_, {})) thread.join();
}

void Scheduler::Kill(Run& run) {
    AssertBaton();
    if (HasEnded(run)) return;
    run.killed = true;
    if (run.state == Run::State::Waiting) {
        std::erase(waiting_, &run);
        run.state = Run::State::Ready;
        ready_.push_back(&run);
    } else if (run.state == Run::State::Blocked) {
        run.stop.request_stop();
    }
}

void Scheduler::Yield() {
    Run& self = Self();
    CheckKilled(self);
    const bool clockDue = ++yields_ % kYieldsPerClockRead == 0 && clock_.Tick() != lastCheck_;
    if (ready_.empty() && !clockDue && !wakeRequested_.load(std::memory_order_relaxed)) return;
    self.state = Run::State::Ready;
    ready_.push_back(&self);
    WaitForTurn(self);
}

void Scheduler::WaitWhile(FunctionRef<bool()> condition, const std::chrono::nanoseconds* recheckAt) {
    Run& self = Self();
    CheckKilled(self);
    if (mainWait_ && OnMainThread()) {
        while (condition()) Block(Blocking::ClockStopped, [this](std::stop_token) { mainWait_(); });
        return;
    }
    // Other threads may have run since the check that ended the wait, so it is checked once more.
    while (condition()) {
        self.state = Run::State::Waiting;
        self.condition = &condition;
        self.recheckAt = recheckAt;
        waiting_.push_back(&self);
        WaitForTurn(self);
        if (self.error) std::rethrow_exception(std::exchange(self.error, nullptr));
    }
}

void Scheduler::Block(Blocking kind, FunctionRef<void(std::stop_token)> call) {
    Run& self = Self();
    CheckKilled(self);
    self.stop = std::stop_source();
    const std::stop_token token = self.stop.get_token();
    BeginBlocking(self, kind);
    std::exception_ptr error;
    try {
        call(token);
    } catch (...) {
        error = std::current_exception();
    }
    EndBlocking(self);
    CheckKilled(self);
    if (error) std::rethrow_exception(error);
}

void Scheduler::WithBaton(FunctionRef<void()> call) {
    assert(ownRun && !HoldsBaton());
    Run& self = *ownRun;
    assert(self.state == Run::State::Blocked);
    const Blocking kind = self.blocking;
    const std::stop_source stop = self.stop;
    EndBlocking(self);
    std::exception_ptr error;
    try {
        call();
    } catch (...) {
        error = std::current_exception();
    }
    self.stop = stop;
    BeginBlocking(self, kind);
    if (error) std::rethrow_exception(error);
}

void Scheduler::SetMainWait(std::function<void()> serve) {
    AssertBaton();
    mainWait_ = std::move(serve);
}

/// Gives the baton up for a blocking call.
void Scheduler::BeginBlocking(Run& self, Blocking kind) {
    self.state = Run::State::Blocked;
    self.blocking = kind;
    blocked_.push_back(&self);
    PassBaton();
}

/// Waits for the baton after the call.
void Scheduler::EndBlocking(Run& self) {
    bool dispatch = false;
    {
        const std::lock_guard lock(mutex_);
        self.returned = true;
        wakeRequested_ = true;
        dispatch = !std::exchange(held_, true);
    }
    changed_.notify_one();
    if (dispatch) Dispatch(self);
    AwaitRole(self);
    self.state = Run::State::Running;
    current_ = &self;
}

void Scheduler::Notify() {
    {
        const std::lock_guard lock(mutex_);
        notified_ = true;
        wakeRequested_ = true;
    }
    changed_.notify_one();
}

/// Gives the baton up, being ready or waiting, and returns when it is this thread's turn.
void Scheduler::WaitForTurn(Run& self) {
    Dispatch(self);
    AwaitRole(self);
    self.state = Run::State::Running;
    current_ = &self;
    CheckKilled(self);
}

/// Waits until the baton is handed to this thread to go on.
void Scheduler::AwaitRole(Run& self) {
    for (;;) {
        Role role;
        {
            std::unique_lock lock(mutex_);
            self.wake.wait(lock, [&self] { return self.role != Role::None; });
            role = std::exchange(self.role, Role::None);
        }
        if (role == Role::Proceed) return;
        Dispatch(self);
    }
}

/// With the baton, but without a turn: finds out whose turn it is, which can be its own, and gives that
/// thread the baton.
void Scheduler::Dispatch(Run& self) {
    current_ = &self;
    if (Run* next = PickNext()) {
        GiveBaton(*next, Role::Proceed);
        return;
    }
    const std::lock_guard lock(mutex_);
    held_ = false;
}

/// Gives the baton to a thread that is ready, or lets another one dispatch: for a thread that is leaving.
void Scheduler::PassBaton() {
    if (!ready_.empty()) {
        Run& next = *ready_.front();
        ready_.pop_front();
        GiveBaton(next, Role::Proceed);
    } else if (!waiting_.empty()) {
        GiveBaton(*waiting_.front(), Role::Dispatch);
    } else {
        current_ = nullptr;
        const std::lock_guard lock(mutex_);
        const auto returned =
            std::find_if(blocked_.begin(), blocked_.end(), [](Run* run) { return run->returned; });
        if (returned == blocked_.end()) {
            held_ = false;
        } else {
            (*returned)->role = Role::Dispatch;
            (*returned)->wake.notify_one();
        }
    }
}

void Scheduler::GiveBaton(Run& next, Role role) {
    current_ = nullptr;
    const std::lock_guard lock(mutex_);
    next.role = role;
    next.wake.notify_one();
}

/// Whose turn it is, letting time pass until it is somebody's; null when all are in blocking calls.
Scheduler::Run* Scheduler::PickNext() {
    for (;;) {
        wakeRequested_ = false;
        const bool look = notified_.exchange(false) || clock_.Tick() != lastCheck_;
        TakeReturned();
        if (look || ready_.empty()) CheckConditions(look);
        if (!ready_.empty()) {
            Run* next = ready_.front();
            ready_.pop_front();
            return next;
        }
        if (!AdvanceTime()) return nullptr;
    }
}

/// Makes those ready whose blocking calls have returned. With a virtual clock, calls that stop the clock
/// return only when no other thread has anything to do, in the order in which they began: see
/// AdvanceVirtualTime.
void Scheduler::TakeReturned() {
    if (blocked_.empty()) return;
    const std::lock_guard lock(mutex_);
    std::erase_if(blocked_, [this](Run* run) {
        const bool later = clock_.IsVirtual() && run->blocking == Blocking::ClockStopped;
        if (later || !std::exchange(run->returned, false)) return false;
        run->state = Run::State::Ready;
        ready_.push_back(run);
        return true;
    });
}

/// Makes the first thread ready whose condition no longer holds, or all such threads.
void Scheduler::CheckConditions(bool all) {
    lastCheck_ = clock_.Tick();
    for (std::size_t i = 0; i < waiting_.size();) {
        Run& run = *waiting_[i];
        if (StillHolds(run)) {
            ++i;
            continue;
        }
        waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(i));
        run.state = Run::State::Ready;
        ready_.push_back(&run);
        if (!all) return;
    }
}

bool Scheduler::StillHolds(Run& run) {
    try {
        return (*run.condition)();
    } catch (...) {
        run.error = std::current_exception();
        return false;
    }
}

/// Nobody is ready: false if nobody is waiting either.
bool Scheduler::AdvanceTime() {
    if (clock_.IsVirtual()) return AdvanceVirtualTime();
    if (waiting_.empty()) return false;
    const auto nextTick = TimeOfTick(clock_.Tick() + 1);
    auto until = std::chrono::nanoseconds::max();
    for (const Run* run : waiting_) until = std::min(until, run->recheckAt ? *run->recheckAt : nextTick);
    SleepUntil(std::max(until, nextTick));
    return true;
}

bool Scheduler::AdvanceVirtualTime() {
    const auto stopping = std::find_if(blocked_.begin(), blocked_.end(),
                                       [](Run* run) { return run->blocking == Blocking::ClockStopped; });
    if (stopping != blocked_.end()) {
        Run* run = *stopping;
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return run->returned || wakeRequested_; });
        if (std::exchange(run->returned, false)) {
            blocked_.erase(stopping);
            run->state = Run::State::Ready;
            ready_.push_back(run);
        }
        return true;
    }
    if (blocked_.empty() && waiting_.empty()) return false;
    if (!blocked_.empty() || wallFollowers_ > 0) {
        const auto due = lastAdvance_ + std::chrono::nanoseconds(std::chrono::seconds(1)) / kTicksPerSecond;
        std::unique_lock lock(mutex_);
        if (changed_.wait_until(lock, due, [this] { return wakeRequested_.load(); })) return true;
        lastAdvance_ = std::chrono::steady_clock::now();
    }
    clock_.Advance();
    return true;
}

void Scheduler::SleepUntil(std::chrono::nanoseconds time) {
    std::unique_lock lock(mutex_);
    const auto woken = [this] { return wakeRequested_.load(); };
    if (time == std::chrono::nanoseconds::max()) {
        changed_.wait(lock, woken);
    } else {
        changed_.wait_for(lock, time - clock_.Now(), woken);
    }
}

}  // namespace sorakaze
