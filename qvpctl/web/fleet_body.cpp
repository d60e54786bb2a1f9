#include "qvpctl/web/fleet_body.h"

#include <map>
#include <set>

#include "client/error.h"

using client::CameraFile;
using client::Error;
using client::ErrorKind;
using client::Secret;
using nlohmann::json;

using Secrets = std::map<std::string, Secret>;  // by their reference

static CameraFile readWith(const std::string& csv, const Secrets& secrets) {
    return client::readCameraFile(csv, [&](const std::string& key, const std::string& reference) {
        if (!reference.starts_with("prompt")) {
            throw bad(key + " is a file: or env: of the tool, which a page does not read; write prompt or prompt:NAME");
        }
        const auto found = secrets.find(reference);
        if (found == secrets.end()) throw bad(key + " is to be asked for, and was not: " + reference);
        return found->second;
    });
}

static Secrets secretsOf(const json& root) {
    Secrets secrets;
    const auto given = root.find("secrets");
    if (given == root.end() || given->is_null()) return secrets;
    if (!given->is_object()) throw bad("secrets must be an object");
    for (const auto& [reference, value] : given->items()) {
        if (!value.is_string()) throw bad("secrets must be texts");
        secrets.emplace(reference, Secret(value.get<std::string>()));
    }
    return secrets;
}

// A table in which every value stands for itself.
class TableWriter {
public:
    explicit TableWriter(const json& cameras) : cameras_(cameras) {
        for (const json& camera : cameras) {
            const bool isCamera = camera.is_object() && camera.contains("mac") && camera["mac"].is_string() &&
                                  camera.contains("settings") && camera["settings"].is_object();
            if (!isCamera) throw bad("cameras are objects with mac and settings");
            for (const auto& [key, value] : camera["settings"].items()) keys_.insert(key);
        }
    }

    std::string write() {
        std::string csv = "mac";
        for (const std::string& key : keys_) csv += "," + quoted(key);
        for (const json& camera : cameras_) {
            csv += "\n" + quoted(camera["mac"].get<std::string>());
            for (const std::string& key : keys_) csv += "," + cellOf(camera["settings"], key);
        }
        return csv + "\n";
    }

    const Secrets& secrets() const { return secrets_; }

private:
    std::string cellOf(const json& settings, const std::string& key) {
        const auto value = settings.find(key);
        if (value == settings.end()) return "";
        if (!value->is_string()) throw bad(key + " must be a text");
        const auto& text = value->get_ref<const std::string&>();
        if (text.empty()) throw bad(key + " must not be empty: many cameras at once are given values alone");
        const client::Setting* setting = client::findSetting(key);
        if (setting == nullptr || !setting->isSecret()) return quoted(text);
        const std::string reference = "prompt:" + std::to_string(secrets_.size());
        secrets_.emplace(reference, Secret(text));
        return reference;
    }

    static std::string quoted(const std::string& text) {
        std::string cell = "\"";
        const bool isGuard = text.starts_with("'");
        if (isGuard) cell += "\\x27";
        for (const char letter : text.substr(isGuard ? 1 : 0)) {
            if (letter == '"' || letter == '\\') cell += letter;
            cell += letter;
        }
        return cell + "\"";
    }

    const json& cameras_;
    std::set<std::string> keys_;
    Secrets secrets_;
};

static CameraFile fileOfCameras(const json& cameras) {
    if (!cameras.is_array() || cameras.empty()) throw bad("cameras must be a list with something in it");
    TableWriter table(cameras);
    const std::string csv = table.write();
    CameraFile file = readWith(csv, table.secrets());
    const auto number = [](client::Place& place) { place = {std::max<size_t>(place.line, 2) - 1, 0}; };
    for (client::Fault& fault : file.faults) number(fault.place);
    for (client::FileCamera& camera : file.cameras) {
        number(camera.place);
        for (client::Place& place : camera.places) number(place);
    }
    return file;
}

CameraFile fleetFile(const JsonBody& body) {
    const json& root = body.root();
    if (const auto cameras = root.find("cameras"); cameras != root.end()) return fileOfCameras(*cameras);
    return readWith(body.text("csv"), secretsOf(root));
}
