// Many cameras at once: the plan of a table, and the run that makes it so.
#pragma once

#include <memory>

#include "qvpctl/web/json_body.h"
#include "qvpctl/web/routes.h"

// {"csv"} or {"cameras"}, and "secrets"; see fleetFile.
WebAnswer planFleet(const WebContext& context, const JsonBody& body);

// The same, and begins to make it so; how it goes on is told as the run of the state.
WebAnswer applyFleet(WebContext& context, const JsonBody& body);

WebAnswer resultTable(const WebContext& context);
WebAnswer exportTable(const WebContext& context);
