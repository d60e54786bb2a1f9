// A plan on disk, bound to what was seen when it was made. No secret stands in it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "qvpctl/fleet/fleet.h"

class SavedPlan {
public:
    // Throws Error Local.
    static void save(const std::string& path, const std::string& file, const std::vector<Reading>& readings);

    // Nothing for a file that is no plan. Throws Error Local, and BadValue for a plan that is damaged.
    static std::optional<SavedPlan> load(const std::string& path);

    // The file of cameras it was made from. Throws Error BadValue when that, or the table beside
    // it, was changed since.
    const std::string& file() const { return file_; }
    void refuseOtherFile() const;

    // Why the camera is not to be changed; "" when all that would change now would have changed then.
    std::string objectionTo(const Reading& reading) const;

private:
    std::string file_, digest_;
    std::map<std::string, Record> cameras_;      // by MAC, the changes of each
    std::map<std::string, std::string> wanted_;  // by MAC, what tells apart what the file wanted of it
};
