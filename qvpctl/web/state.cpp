#include "qvpctl/web/state.h"

#include <utility>

#include "client/text.h"

using client::Error;
using client::Found;
using client::SteadyClock;

template <typename Work>
auto WebState::changed(const Work& work) {
    struct Waker {
        const std::function<void()>& wake;
        ~Waker() { wake(); }
    };
    const Waker waker{wake_};  // goes after the lock
    const std::scoped_lock lock(mutex_);
    return work();
}

void WebState::tell(const char* event, const Record& data) { log_.add(event, data); }

bool WebState::take(const Found& found) {
    const std::scoped_lock lock(mutex_);
    return cameras_.take(found, SteadyClock::now(), time(nullptr));
}

void WebState::endSearch(const std::vector<Found>& answered) {
    const std::scoped_lock lock(mutex_);
    cameras_.endSearch(answered, SteadyClock::now());
}

void WebState::tick() {
    bool isNews = false;
    {
        const std::scoped_lock lock(mutex_);
        for (const Record& camera : cameras_.news(SteadyClock::now())) {
            tell("camera", camera);
            isNews = true;
        }
        if (isRunChanged_) tell("run", run_->record());
        isNews |= std::exchange(isRunChanged_, false);
    }
    if (isNews) wake_();
}

bool WebState::isDoubtful() const {
    const std::scoped_lock lock(mutex_);
    return cameras_.isDoubtful(SteadyClock::now());
}

std::optional<Found> WebState::camera(const std::string& mac) const {
    const std::scoped_lock lock(mutex_);
    return cameras_.find(mac);
}

std::vector<Found> WebState::cameras() const {
    const std::scoped_lock lock(mutex_);
    return cameras_.present(SteadyClock::now());
}

void WebState::tellSearch(Record search) {
    changed([&] {
        search_ = std::move(search);
        tell("search", search_);
    });
}

std::optional<std::string> WebState::beginChange(const std::string& mac, ChangeKind kind) {
    return changed([&] {
        const auto id = changes_.begin(mac, kind);
        if (id) tell("change", changes_.record(*id, SteadyClock::now()));
        return id;
    });
}

void WebState::stepChange(const std::string& id, const client::Progress& progress) {
    changed([&] { tell("change", changes_.step(id, progress, SteadyClock::now())); });
}

void WebState::awayChange(const std::string& id, const std::string& what, std::chrono::seconds patience) {
    changed([&] { tell("change", changes_.away(id, what, patience, SteadyClock::now())); });
}

void WebState::endChange(const std::string& id, const std::optional<Error>& error) {
    changed([&] { tell("change", changes_.end(id, error, SteadyClock::now())); });
}

bool WebState::hold(const std::string& mac) {
    const std::scoped_lock lock(mutex_);
    return changes_.hold(mac);
}

void WebState::release(const std::string& mac) {
    const std::scoped_lock lock(mutex_);
    changes_.release(mac);
}

std::optional<std::string> WebState::beginRun(const std::vector<Mac>& cameras) {
    return changed([&]() -> std::optional<std::string> {
        if (run_ && !run_->isOver()) return std::nullopt;
        std::vector<std::string> held;
        for (const Mac mac : cameras) {
            if (!changes_.hold(client::macText(mac))) break;
            held.push_back(client::macText(mac));
        }
        if (held.size() < cameras.size()) {
            for (const std::string& mac : held) changes_.release(mac);
            return std::nullopt;
        }
        const std::string id = std::to_string(log_.last() + 1);
        run_.emplace(id, cameras);
        tell("run", run_->record());
        return id;
    });
}

void WebState::changeRun(const std::function<void(WebRun&)>& change) {
    const std::scoped_lock lock(mutex_);
    if (!run_) return;
    change(*run_);
    isRunChanged_ = true;
}

void WebState::endRun() {
    changeRun([&](WebRun& run) {
        run.end();
        for (const Mac mac : run.cameras()) changes_.release(client::macText(mac));
    });
}

std::optional<WebRun> WebState::run() const {
    const std::scoped_lock lock(mutex_);
    return run_;
}

bool WebState::isRunStopped() const {
    const std::scoped_lock lock(mutex_);
    return run_ && run_->isStopped();
}

void WebState::setLogin(const std::string& mac, client::Login login) {
    const std::scoped_lock lock(mutex_);
    logins_.set(mac, std::move(login));
}

void WebState::forgetLogin(const std::string& mac) {
    const std::scoped_lock lock(mutex_);
    logins_.forget(mac);
}

void WebState::forgetLogins() {
    const std::scoped_lock lock(mutex_);
    logins_.forgetAll();
}

std::optional<client::Login> WebState::login(const std::string& mac) const {
    const std::scoped_lock lock(mutex_);
    return logins_.of(mac);
}

void WebState::notice(const std::string& text) {
    changed([&] {
        tell("notice", {
                           {"text", text}
        });
    });
}

std::string WebState::snapshot(std::optional<uint64_t>& number) const {
    const auto now = SteadyClock::now();
    number = log_.last();
    return EventLog::text(*number, "snapshot",
                          {
                              {"cameras", cameras_.records(now)           },
                              {"search",  search_                         },
                              {"changes", changes_.records(now)           },
                              {"run",     run_ ? run_->record() : Record()}
    });
}

std::string WebState::eventsAfter(std::optional<uint64_t>& number, size_t room) const {
    const std::scoped_lock lock(mutex_);
    if (number) {
        if (auto text = log_.after(*number, room)) return *text;
    }
    return snapshot(number);
}

uint64_t WebState::lastEvent() const {
    const std::scoped_lock lock(mutex_);
    return log_.last();
}
