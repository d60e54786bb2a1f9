// Several cameras at a time: a thread for each, with a socket of its own.
#pragma once

#include <functional>
#include <string>

#include "client/fleet/camera_job.h"
#include "qvpctl/options.h"

// Calls `work` for each index below `count`, that many at a time, until all are done or the descriptor `stop` is
// readable. It must not throw.
void inParallel(size_t count, size_t parallel, int stop, const std::function<void(size_t)>& work);

// True once the user wants to stop.
bool isStopped(int stop);

// `say`, from any thread.
void sayFromCrew(const std::string& sentence);

// Runs `work` with a job of its own for one camera. An interrupted one throws Error Unverified.
void withJob(const CommonOptions& common, const std::vector<client::Login>& logins, int stop,
             const std::function<void(client::CameraJob&)>& work);
