// What the commands work with: the link to the network, the cameras by their names, and the way to say something.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "client/session/session.h"
#include "client/udp_link.h"
#include "qvpctl/options.h"
#include "qvpctl/stop_signal.h"

// A sentence for the user on standard error, behind the tool's name; hostile bytes in it are made harmless.
void say(const std::string& sentence);

// From here on each of them is a JSON object on a line of its own.
void sayInJson();

// A link that hears replies, and presence reports too unless another program holds their port for itself. `stop` as
// UdpLink has it.
client::UdpLink linkWithReports(int stop = -1);

// The interfaces to use. Throws Error Local when there is none.
std::vector<client::Interface> chosenInterfaces(const CommonOptions& options);

// The camera that goes by that MAC, address or name. Throws Error NotFound, or Ambiguous with the candidates. One that
// is only heard by its presence report is found too when that may take up to `patience`.
client::Found findCamera(client::Link& link, const CommonOptions& options, const std::string& name,
                         std::chrono::milliseconds patience = std::chrono::milliseconds(0));

client::Session openSession(client::Link& link, const CommonOptions& options, const client::Found& camera,
                            const client::Login& login);
