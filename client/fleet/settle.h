// What each camera of a file is to have, from its own row and from the policy.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "client/fleet/camera_file.h"

namespace client {

// What a camera tells of itself, in its answers and in its reports; nothing of one that was not heard.
struct Seen {
    std::optional<std::string> name, product;
};

struct Settled {
    // In the order of the file. One whose groups or whose address cannot be known is unsettled: with NotFound when it
    // is the camera itself that was not heard, and with Ambiguous when it is another.
    std::vector<FileCamera> cameras;
    std::vector<Fault> faults;  // ranges that are too small
    std::vector<Fault> notes;   // groups that nobody is in
};

// `seen` is of each camera of the file, or empty before any was asked. A group's name is held against the name that the
// row gives, a product against that of the table; only where these say nothing, against what was seen. The addresses of
// a range go to the cameras that have no other, in the order of the file, but for those that stand in a row: so that
// they are the same in every run, whoever is there.
Settled settle(const CameraFile& file, std::span<const Seen> seen);

}  // namespace client
