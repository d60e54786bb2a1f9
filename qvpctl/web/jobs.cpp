#include "qvpctl/web/jobs.h"

#include <utility>

void Jobs::sweep() {
    for (auto job = jobs_.begin(); job != jobs_.end();) {
        if (job->isOver) job->thread.join();
        job = job->isOver ? jobs_.erase(job) : std::next(job);
    }
}

bool Jobs::start(std::function<void()> work) {
    const std::scoped_lock lock(mutex_);
    sweep();
    if (isClosed_ || jobs_.size() >= kMost) return false;
    Job& job = jobs_.emplace_back();
    job.thread = std::thread([&job, run = std::move(work)] {
        run();
        job.isOver = true;
    });
    return true;
}

void Jobs::close() {
    {
        const std::scoped_lock lock(mutex_);
        isClosed_ = true;
    }
    for (Job& job : jobs_) {
        if (job.thread.joinable()) job.thread.join();
    }
    jobs_.clear();
}
