// What the tests of policies share: a policy read from texts, and what came of it as words.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "client/error.h"
#include "client/fleet/policy_file.h"
#include "client/fleet/settle.h"
#include "client/text.h"

// Reads it with the files beside it; a secret is known by its reference.
inline client::CameraFile readPolicy(const std::string& text, const std::map<std::string, std::string>& beside = {}) {
    const client::SecretReader readSecret = [](const std::string& key, const std::string& reference) {
        if (reference == "env:MISSING") throw client::Error(client::ErrorKind::BadValue, key + " is not there");
        return client::Secret("MARKED " + reference);
    };
    const auto readTable = [&](const std::string& path) {
        if (!beside.contains(path)) throw client::localError("cannot read " + path, 2);
        return client::PolicyTable{beside.at(path), readSecret};
    };
    return client::readPolicyFile(text, readSecret, readTable);
}

// "FILE LINE:COLUMN text"; the file is left out where it is the policy.
inline std::vector<std::string> wordsOf(const std::vector<client::Fault>& faults) {
    std::vector<std::string> words;
    for (const client::Fault& one : faults) {
        words.push_back((one.place.file == 0 ? "" : "table ") + std::to_string(one.place.line) + ":" +
                        std::to_string(one.place.column) + " " + one.text);
    }
    return words;
}

inline std::vector<std::string> policyFaults(const std::string& text,
                                             const std::map<std::string, std::string>& beside = {}) {
    return wordsOf(readPolicy(text, beside).faults);
}

// "KEY=VALUE" of each, separated by blanks; "!" and why, where that is not known.
inline std::string wordsOf(const client::FileCamera& camera) {
    if (camera.unsettled) return std::string("! ") + camera.unsettled->what();
    std::string words;
    for (const client::Assignment& one : camera.assignments) {
        const auto* text = std::get_if<std::string>(&one.value);
        const std::string value = text != nullptr ? *text : std::get<client::Secret>(one.value).reveal();
        words += (words.empty() ? "" : " ") + std::string(one.setting->key) + "=" + value;
    }
    return words;
}

inline std::vector<std::string> wordsOf(const client::Settled& settled) {
    std::vector<std::string> words;
    for (const client::FileCamera& camera : settled.cameras) words.push_back(wordsOf(camera));
    return words;
}
