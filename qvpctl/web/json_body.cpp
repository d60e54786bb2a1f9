#include "qvpctl/web/json_body.h"

#include "qvpctl/web/message.h"

using client::Assignment;
using client::Error;
using client::ErrorKind;
using client::Secret;
using nlohmann::json;

Error bad(const std::string& what) { return Error(ErrorKind::BadValue, what); }

static constexpr int kDeepest = 8;

JsonBody::JsonBody(const std::string& text) {
    bool isDeep = false;
    const auto look = [&](int depth, json::parse_event_t, json&) {
        isDeep |= depth > kDeepest;
        return !isDeep;
    };
    root_ = json::parse(text, look, false);
    if (isDeep || !root_.is_object()) throw bad("the body is no JSON object as this page sends it");
}

static void wipeAll(json& value) {
    if (value.is_string()) wipe(value.get_ref<std::string&>());
    if (!value.is_structured()) return;
    for (json& one : value) wipeAll(one);
}

JsonBody::~JsonBody() { wipeAll(root_); }

static const std::string& textIn(const json& object, const std::string& key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) throw bad(key + " is needed, as a text");
    return found->get_ref<const std::string&>();
}

std::string JsonBody::text(const char* key) const { return textIn(root_, key); }

Secret JsonBody::secret(const char* key) const { return Secret(textIn(root_, key)); }

std::string JsonBody::textOr(const char* key, const std::string& otherwise) const {
    return root_.contains(key) && !root_.at(key).is_null() ? textIn(root_, key) : otherwise;
}

uint32_t JsonBody::count(const char* key, uint32_t otherwise, uint32_t most) const {
    if (!root_.contains(key)) return otherwise;
    const json& value = root_.at(key);
    const bool isCount = value.is_number_unsigned() && value.get<uint64_t>() >= 1 && value.get<uint64_t>() <= most;
    if (!isCount) throw bad(std::string(key) + " must be a number from 1 to " + std::to_string(most));
    return value.get<uint32_t>();
}

static Assignment assignmentOf(const std::string& key, const json& value) {
    const client::Setting* setting = client::findSetting(key);
    if (setting == nullptr) throw bad("there is no such setting");
    if (setting->isReadOnly()) throw bad(key + " can only be read");
    if (!value.is_string()) throw bad(key + " must be a text");
    const auto& text = value.get_ref<const std::string&>();
    return setting->isSecret() ? Assignment{setting, Secret(text)} : Assignment{setting, text};
}

std::vector<Assignment> assignmentsOf(const json& settings) {
    if (!settings.is_object() || settings.empty()) throw bad("settings must be an object with something in it");
    std::vector<Assignment> assignments;
    for (const auto& [key, value] : settings.items()) assignments.push_back(assignmentOf(key, value));
    return assignments;
}

std::vector<Assignment> JsonBody::settings() const {
    const auto found = root_.find("settings");
    return assignmentsOf(found != root_.end() ? *found : json::object());
}
