// What is done with one camera, on a thread of its own.
#pragma once

#include <string>
#include <vector>

#include "qvpctl/web/routes.h"

// All of its settings; without a login that it takes, those that it tells everybody.
WebAnswer readCamera(const WebContext& context, const client::Found& found);

WebAnswer planChange(const WebContext& context, const client::Found& found,
                     const std::vector<client::Assignment>& assignments);

// The wireless networks it sees. The camera is held meanwhile.
WebAnswer scanNetworks(const WebContext& context, const client::Found& found);

// Each begins and goes on by itself; how it ends is told as a change of the state.
WebAnswer beginChange(WebContext& context, const client::Found& found, ChangeKind kind,
                      const std::vector<client::Assignment>& assignments);
WebAnswer beginBoot(WebContext& context, const client::Found& found, ChangeKind kind);
