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
    const std::chrono::nanoseconds* lookAgain = nullptr;
    std::exception_ptr error;  ///< what the condition threw at its last look
    Blocking blocking = Blocking::TimeStands;
    std::stop_source stop{std::nostopstate};  ///< of the blocking call

    // Guarded by Scheduler::mutex_.
    std::condition_variable wake;
    Role role = Role::None;
    bool returned = false;  ///< the blocking call is over
};

namespace {

/// The calling thread's run, whichever scheduler it belongs to. A thread belongs to one at a time.
thread_local Scheduler::Run* ownRun = nullptr;

/// A working pass looks at the clock at every so many yields: reading it costs more than the yield.
constexpr unsigned kYieldsPerClockRead = 32;

}  // namespace

Scheduler::Scheduler(Clock& clock, std::function<void(std::exception_ptr)> onUncaught)
    : clock_(clock), onUncaught_(std::move(onUncaught)), main_(std::make_shared<Run>()) {
    assert(!ownRun);
    ownRun = main_.get();
    current_ = ownRun;
    main_->state = Run::State::Running;
    lastLook_ = clock_.Tick();
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
    Park(*run);
    run->state = Run::State::Running;
    current_ = run.get();
    if (!run->killed) {
        try {
            run->body();
        } catch (const ThreadKilled&) {
        } catch (...) {
            // What tells the user of it can be killed in its turn, or fail: the application lives on.
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
    PassOn();
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
    const bool clockDue = ++yields_ % kYieldsPerClockRead == 0 && clock_.Tick() != lastLook_;
    if (ready_.empty() && !clockDue && !happened_.load(std::memory_order_relaxed)) return;
    self.state = Run::State::Ready;
    ready_.push_back(&self);
    GiveWay(self);
}

void Scheduler::WaitWhile(FunctionRef<bool()> condition, const std::chrono::nanoseconds* lookAgain) {
    Run& self = Self();
    CheckKilled(self);
    if (mainWait_ && OnMainThread()) {
        while (condition()) Block(Blocking::TimeStands, [this](std::stop_token) { mainWait_(); });
        return;
    }
    // Between the look that ended the wait and this thread's turn others may have run: so it looks once more.
    while (condition()) {
        self.state = Run::State::Waiting;
        self.condition = &condition;
        self.lookAgain = lookAgain;
        waiting_.push_back(&self);
        GiveWay(self);
        if (self.error) std::rethrow_exception(std::exchange(self.error, nullptr));
    }
}

void Scheduler::Block(Blocking kind, FunctionRef<void(std::stop_token)> call) {
    Run& self = Self();
    CheckKilled(self);
    self.stop = std::stop_source();
    const std::stop_token token = self.stop.get_token();
    Leave(self, kind);
    std::exception_ptr error;
    try {
        call(token);
    } catch (...) {
        error = std::current_exception();
    }
    Return(self);
    CheckKilled(self);
    if (error) std::rethrow_exception(error);
}

void Scheduler::WithBaton(FunctionRef<void()> call) {
    assert(ownRun && !HoldsBaton());
    Run& self = *ownRun;
    assert(self.state == Run::State::Blocked);
    const Blocking kind = self.blocking;
    const std::stop_source stop = self.stop;
    Return(self);
    std::exception_ptr error;
    try {
        call();
    } catch (...) {
        error = std::current_exception();
    }
    self.stop = stop;
    Leave(self, kind);
    if (error) std::rethrow_exception(error);
}

void Scheduler::SetMainWait(std::function<void()> serve) {
    AssertBaton();
    mainWait_ = std::move(serve);
}

/// Gives the baton up for a blocking call...
void Scheduler::Leave(Run& self, Blocking kind) {
    self.state = Run::State::Blocked;
    self.blocking = kind;
    blocked_.push_back(&self);
    PassOn();
}

/// ...and takes it again behind it.
void Scheduler::Return(Run& self) {
    bool lead = false;
    {
        const std::lock_guard lock(mutex_);
        self.returned = true;
        happened_ = true;
        lead = !std::exchange(held_, true);
    }
    changed_.notify_one();
    if (lead) Lead(self);
    Park(self);
    self.state = Run::State::Running;
    current_ = &self;
}

void Scheduler::Notify() {
    {
        const std::lock_guard lock(mutex_);
        notified_ = true;
        happened_ = true;
    }
    changed_.notify_one();
}

/// Gives the baton up, being ready or waiting, and returns when it is this thread's turn.
void Scheduler::GiveWay(Run& self) {
    Lead(self);
    Park(self);
    self.state = Run::State::Running;
    current_ = &self;
    CheckKilled(self);
}

/// Waits until the baton is handed to this thread to go on.
void Scheduler::Park(Run& self) {
    for (;;) {
        Role role;
        {
            std::unique_lock lock(mutex_);
            self.wake.wait(lock, [&self] { return self.role != Role::None; });
            role = std::exchange(self.role, Role::None);
        }
        if (role == Role::Proceed) return;
        Lead(self);
    }
}

/// With the baton, but without a turn: finds out whose turn it is, be it one's own, and hands the baton
/// there.
void Scheduler::Lead(Run& self) {
    current_ = &self;
    if (Run* next = PickNext()) {
        Hand(*next, Role::Proceed);
        return;
    }
    const std::lock_guard lock(mutex_);
    held_ = false;
}

/// Hands the baton on without a look at conditions and time, for a thread that has other things to do.
void Scheduler::PassOn() {
    if (!ready_.empty()) {
        Run& next = *ready_.front();
        ready_.pop_front();
        Hand(next, Role::Proceed);
    } else if (!waiting_.empty()) {
        Hand(*waiting_.front(), Role::Lead);
    } else {
        current_ = nullptr;
        const std::lock_guard lock(mutex_);
        const auto returned =
            std::find_if(blocked_.begin(), blocked_.end(), [](Run* run) { return run->returned; });
        if (returned == blocked_.end()) {
            held_ = false;
        } else {
            (*returned)->role = Role::Lead;
            (*returned)->wake.notify_one();
        }
    }
}

void Scheduler::Hand(Run& next, Role role) {
    current_ = nullptr;
    const std::lock_guard lock(mutex_);
    next.role = role;
    next.wake.notify_one();
}

/// Whose turn it is, letting time pass until it is somebody's; null when all are in blocking calls.
Scheduler::Run* Scheduler::PickNext() {
    for (;;) {
        happened_ = false;
        const bool look = notified_.exchange(false) || clock_.Tick() != lastLook_;
        TakeReturned();
        if (look || ready_.empty()) LookAtConditions(look);
        if (!ready_.empty()) {
            Run* next = ready_.front();
            ready_.pop_front();
            return next;
        }
        if (!LetTimePass()) return nullptr;
    }
}

/// Makes those ready whose blocking calls are over. Under a driven clock a call for which time stands comes
/// back only when nobody else has anything to do, and in the order in which the calls began: see
/// LetDrivenTimePass.
void Scheduler::TakeReturned() {
    if (blocked_.empty()) return;
    const std::lock_guard lock(mutex_);
    std::erase_if(blocked_, [this](Run* run) {
        const bool later = clock_.IsDriven() && run->blocking == Blocking::TimeStands;
        if (later || !std::exchange(run->returned, false)) return false;
        run->state = Run::State::Ready;
        ready_.push_back(run);
        return true;
    });
}

/// Makes the first thread ready whose condition no longer holds, or all such threads.
void Scheduler::LookAtConditions(bool all) {
    lastLook_ = clock_.Tick();
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
bool Scheduler::LetTimePass() {
    if (clock_.IsDriven()) return LetDrivenTimePass();
    if (waiting_.empty()) return false;
    const auto nextTick = TimeOfTick(clock_.Tick() + 1);
    auto until = std::chrono::nanoseconds::max();
    for (const Run* run : waiting_) until = std::min(until, run->lookAgain ? *run->lookAgain : nextTick);
    SleepUntil(std::max(until, nextTick));
    return true;
}

bool Scheduler::LetDrivenTimePass() {
    const auto standing = std::find_if(blocked_.begin(), blocked_.end(),
                                       [](Run* run) { return run->blocking == Blocking::TimeStands; });
    if (standing != blocked_.end()) {
        Run* run = *standing;
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return run->returned || happened_; });
        if (std::exchange(run->returned, false)) {
            blocked_.erase(standing);
            run->state = Run::State::Ready;
            ready_.push_back(run);
        }
        return true;
    }
    if (blocked_.empty() && waiting_.empty()) return false;
    if (!blocked_.empty() || keptToWall_ > 0) {
        const auto due = lastAdvance_ + std::chrono::nanoseconds(std::chrono::seconds(1)) / kTicksPerSecond;
        std::unique_lock lock(mutex_);
        if (changed_.wait_until(lock, due, [this] { return happened_.load(); })) return true;
        lastAdvance_ = std::chrono::steady_clock::now();
    }
    clock_.Advance();
    return true;
}

void Scheduler::SleepUntil(std::chrono::nanoseconds time) {
    std::unique_lock lock(mutex_);
    const auto woken = [this] { return happened_.load(); };
    if (time == std::chrono::nanoseconds::max()) {
        changed_.wait(lock, woken);
    } else {
        changed_.wait_for(lock, time - clock_.Now(), woken);
    }
}

}  // namespace sorakaze
