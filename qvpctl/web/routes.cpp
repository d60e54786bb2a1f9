#include "qvpctl/web/routes.h"

#include "qvpctl/web/page_files.h"

static WebAnswer fileAnswer(const WebRequest& request) {
    for (const PageFile& file : pageFiles()) {
        if (request.path == file.path) return {200, file.type, std::string(file.content), {}};
    }
    return errorAnswer(404, "not-found", "there is no such page");
}

Reaction routeRequest(WebContext& context, const WebRequest& request) {
    if (!request.isApi()) {
        const bool isReading = request.method == "GET" || request.method == "HEAD";
        return isReading ? fileAnswer(request) : errorAnswer(405, "method", "this can only be read");
    }
    for (const auto route : {routeSession, routeCamera, routeFleet}) {
        if (auto reaction = route(context, request)) return std::move(*reaction);
    }
    return errorAnswer(404, "not-found", "there is no such request");
}
