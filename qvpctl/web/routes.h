// Which request does what.
#pragma once

#include <atomic>

#include "qvpctl/options.h"
#include "qvpctl/web/jobs.h"
#include "qvpctl/web/message.h"
#include "qvpctl/web/state.h"

// What the answers are made with.
struct WebContext {
    WebState& state;
    Jobs& jobs;
    const CommonOptions& common;
    int stop;                                  // readable once the server ends
    std::function<void()> startAgain = [] {};  // ends this server, and starts one with virtual cameras
};

Reaction routeRequest(WebContext& context, const WebRequest& request);

// The parts of /api/, each with a null reaction for what is not its own.
using MaybeReaction = std::optional<Reaction>;
MaybeReaction routeSession(WebContext& context, const WebRequest& request);
MaybeReaction routeCamera(WebContext& context, const WebRequest& request);
MaybeReaction routeFleet(WebContext& context, const WebRequest& request);

inline bool isRequest(const WebRequest& request, const char* method, const char* path) {
    return request.method == method && request.path == path;
}
