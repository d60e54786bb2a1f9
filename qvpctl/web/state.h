// What all threads of the server share, behind one mutex: cameras, search, changes, the run of many, logins, and the
// events that tell of them.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "qvpctl/web/camera_table.h"
#include "qvpctl/web/change_list.h"
#include "qvpctl/web/event_log.h"
#include "qvpctl/web/fleet_progress.h"
#include "qvpctl/web/logins.h"

class WebState {
public:
    explicit WebState(uint64_t firstEvent) : log_(firstEvent) {}

    // Is called after each event, by the thread that it comes from. To be set before there is another.
    void onNews(std::function<void()> wake) { wake_ = std::move(wake); }

    // Cameras, by the thread that listens.
    bool take(const client::Found& found);
    void endSearch(const std::vector<client::Found>& answered);
    void tick();
    bool isDoubtful() const;
    std::optional<client::Found> camera(const std::string& mac) const;
    std::vector<client::Found> cameras() const;

    // The search, which anybody may ask for.
    void askForSearch() { isSearchAsked_ = true; }
    bool takeSearchWish() { return isSearchAsked_.exchange(false); }
    void tellSearch(Record search);

    // Changes of single cameras, and whose camera it is.
    std::optional<std::string> beginChange(const std::string& mac, ChangeKind kind);
    void stepChange(const std::string& id, const client::Progress& progress);
    void awayChange(const std::string& id, const std::string& what, std::chrono::seconds patience);
    void endChange(const std::string& id, const std::optional<client::Error>& error);
    bool hold(const std::string& mac);
    void release(const std::string& mac);

    // The run of many cameras, one at a time. That it changed is told by the next tick.
    std::optional<std::string> beginRun(const std::vector<Mac>& cameras);  // its number
    void changeRun(const std::function<void(WebRun&)>& change);
    void endRun();
    std::optional<WebRun> run() const;
    bool isRunStopped() const;

    void setLogin(const std::string& mac, client::Login login);
    void forgetLogin(const std::string& mac);
    void forgetLogins();
    std::optional<client::Login> login(const std::string& mac) const;

    void notice(const std::string& text);

    // The events behind that number, which moves on; everything anew where some of them are lost.
    std::string eventsAfter(std::optional<uint64_t>& number, size_t room) const;
    uint64_t lastEvent() const;

private:
    void tell(const char* event, const Record& data);  // with the mutex held
    std::string snapshot(std::optional<uint64_t>& number) const;

    // Holds the mutex, and wakes those who look on once it is free again.
    template <typename Work>
    auto changed(const Work& work);

    std::function<void()> wake_ = [] {};
    std::atomic<bool> isSearchAsked_{true};
    mutable std::mutex mutex_;
    EventLog log_;
    CameraTable cameras_;
    Record search_ = {
        {"running",    false          },
        {"interfaces", Record::array()},
        {"found",      0              },
        {"warnings",   Record::array()}
    };
    ChangeList changes_;
    std::optional<WebRun> run_;
    bool isRunChanged_ = false;
    Logins logins_;
};
