// The cameras of a request as a file of cameras.
#pragma once

#include "client/fleet/camera_file.h"
#include "qvpctl/web/json_body.h"

// "csv" is a table as the tool's commands read it; a secret in it is a reference, prompt or prompt:NAME, which
// "secrets" gives the value of: a page reads neither files nor the environment. Or "cameras", [{"mac", "settings":
// {KEY: VALUE}}], with the secrets themselves. Throws Error BadValue; what is wrong inside of a table stands in its
// faults, the line of "cameras" being its number from 1.
client::CameraFile fleetFile(const JsonBody& body);
