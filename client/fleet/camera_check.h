// What can be said against a camera of a file before the camera is asked.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "client/fleet/camera_file.h"

namespace client {

// What the camera is to have of that setting; null: the file leaves it alone.
const Assignment* findAssignment(const FileCamera& camera, std::string_view key);

// Where to look for what an error says that begins with a key, and the error there: of a value that many cameras share,
// with the camera.
Place placeOf(const FileCamera& camera, std::string_view what);
Fault faultOn(const FileCamera& camera, const std::string& what);

// Why no file may have that key; "" for one that it may.
std::string faultOfKey(const Setting& setting);
std::string faultOfUnknownKey(const std::string& key);

// Throws Error BadValue for what no camera takes. A wireless key can be judged only beside the security that it is for.
void checkValue(const Assignment& assignment);

// What is wrong with its values beside one another.
std::optional<Fault> faultTogether(const FileCamera& camera);

// Cameras that stand in the file twice, and addresses that two of them have in their rows.
std::vector<Fault> findTwins(const CameraFile& file);

}  // namespace client
