#include "qvpctl/fleet/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "client/text.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/wait_bar.h"

static winsize terminalSize() {
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
    if (!isKnown) size = {24, 80, 0, 0};
    return size;
}

FleetProgress::Form FleetProgress::formFor(bool json) {
    if (json) return Form::None;
    const char* terminal = std::getenv("TERM");
    const bool canDraw = isatty(STDERR_FILENO) != 0 && terminal != nullptr && strcmp(terminal, "dumb") != 0;
    return canDraw ? Form::Terminal : Form::Lines;
}

FleetProgress::FleetProgress(std::vector<Mac> cameras, Form form) : form_(form) {
    for (const Mac mac : cameras) {
        rows_.emplace_back();
        rows_.back().mac = client::macText(mac);
    }
    if (form_ == Form::Terminal) ticker_ = std::jthread([this] { tick(); });
}

FleetProgress::~FleetProgress() {
    const std::scoped_lock lock(mutex_);
    isOver_ = true;
    wake_.notify_all();
    erase();
}

void FleetProgress::tick() {
    std::unique_lock lock(mutex_);
    while (!isOver_) {
        draw();
        wake_.wait_for(lock, std::chrono::milliseconds(500));
    }
}

static std::string stepText(const client::Progress& progress) {
    std::string settings = client::factsOf(progress.group).name;
    switch (progress.step) {
        case client::Progress::Step::Sent:
            return "sent: " + settings;
        case client::Progress::Step::Away:
            return "away: it " + std::string(client::factsOf(progress.group).effect);
        case client::Progress::Step::Back:
            return "back";
    }
    return settings;
}

void FleetProgress::tell(size_t camera, const client::Progress& progress) {
    const bool isAway = progress.step == client::Progress::Step::Away;
    set(camera, stepText(progress), true, isAway ? 3 * progress.away : std::chrono::seconds(0));
}

void FleetProgress::finish(size_t camera, const std::string& result) {
    {
        const std::scoped_lock lock(mutex_);
        done_++;
    }
    set(camera, result, false, std::chrono::seconds(0));
}

void FleetProgress::set(size_t camera, const std::string& step, bool isActive, std::chrono::seconds expected) {
    if (form_ == Form::Lines) sayFromCrew(rows_[camera].mac + ": " + step);
    if (form_ != Form::Terminal) return;
    const std::scoped_lock lock(mutex_);
    Row& row = rows_[camera];
    row.step = step;
    row.isActive = isActive;
    row.expected = expected;
    row.since = std::chrono::steady_clock::now();
    draw();
}

std::string FleetProgress::textOf(const Row& row) const {
    if (row.expected.count() == 0) return row.mac + "  " + row.step;
    const auto passed =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - row.since);
    return row.mac + "  " + barText(passed, row.expected) + "  " + row.step;
}

void FleetProgress::erase() {
    if (drawn_ > 0) std::cerr << "\033[" << drawn_ << "A\r\033[J" << std::flush;
    drawn_ = 0;
}

// All of the cameras where they fit, else those that something is done with.
void FleetProgress::draw() {
    const winsize size = terminalSize();
    const size_t room = size.ws_row - 2u;
    std::string lines;
    size_t count = 0;
    for (const Row& row : rows_) {
        const bool isShown = rows_.size() <= room || (row.isActive && count < room);
        if (!isShown) continue;
        lines += textOf(row).substr(0, size.ws_col - 1u) + "\n";
        count++;
    }
    erase();
    std::cerr << lines << done_ << " of " << rows_.size() << " done\n" << std::flush;
    drawn_ = count + 1;
}
