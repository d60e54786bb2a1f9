// What the client knows as the records that outputs show: one place for every field name of --json.
#pragma once

#include <ctime>

#include "client/commands/survey.h"
#include "client/search.h"
#include "client/settings/setting.h"
#include "qvpctl/output.h"

Record recordOf(const client::Found& found);

// "2026-01-31T23:59:59+01:00", local time with its offset.
std::string isoTime(time_t time);

// `arrival` is shown in local time with its offset.
Record recordOf(const client::Presence& presence, const std::string& interface, time_t arrival);

Record recordOf(const client::Site& site);

// One setting and its value; null for a secret.
Record recordOf(const client::Setting& setting, const client::CameraState& state);

// What is wrong with a camera's place on the network, each in a word: other-subnet, duplicate-address, duplicate-mac,
// sender-differs.
std::vector<std::string> problemsOf(const client::Found& found);
