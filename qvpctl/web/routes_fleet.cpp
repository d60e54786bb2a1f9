// What is of many cameras at once.
#include <memory>

#include "qvpctl/web/fleet_work.h"
#include "qvpctl/web/routes.h"

MaybeReaction routeFleet(WebContext& context, const WebRequest& request) {
    if (isRequest(request, "GET", "/api/fleet/result.csv")) return resultTable(context);
    if (isRequest(request, "GET", "/api/export.csv")) {
        return LaterAnswer([&context] { return exportTable(context); });
    }
    if (isRequest(request, "POST", "/api/fleet/stop")) {
        context.state.changeRun([](WebRun& run) { run.stop(); });
        return emptyAnswer(202);
    }
    const bool isPlan = isRequest(request, "POST", "/api/fleet/plan");
    if (!isPlan && !isRequest(request, "POST", "/api/fleet/apply")) return std::nullopt;
    const auto body = std::make_shared<JsonBody>(request.body);
    return LaterAnswer(
        [&context, body, isPlan] { return isPlan ? planFleet(context, *body) : applyFleet(context, *body); });
}
