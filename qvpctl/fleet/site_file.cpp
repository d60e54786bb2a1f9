#include "qvpctl/fleet/site_file.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <span>
#include <sstream>
#include <utility>

#include "client/fleet/policy_file.h"
#include "qvpctl/fleet/journal.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/terminal_text.h"

namespace fs = std::filesystem;
using client::CameraFile;
using client::Error;
using client::ErrorKind;
using client::Fault;

std::string readWhole(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (file) text << file.rdbuf();
    const bool isFolder = fs::is_directory(path);
    if (isFolder || !file || file.bad()) {
        throw client::localError("cannot read " + printable(path), isFolder ? EISDIR : errno != 0 ? errno : EIO);
    }
    return text.str();
}

// A secret that many rows name is read, or asked for, once. A file is looked for beside the one that names it.
class ReferencedSecrets {
public:
    client::SecretReader readerFor(const std::string& path) {
        return [this, folder = fs::path(path).parent_path()](const std::string& key, const std::string& reference) {
            return read(key, sourceOf(reference, folder));
        };
    }

private:
    client::Secret read(const std::string& key, const std::string& source) try {
        const auto name = std::pair(key, source);
        const auto known = known_.find(name);
        if (known != known_.end()) return known->second;
        return known_[name] = readSecret(key, source);
    } catch (const Error& error) {
        const std::string what = error.what();
        throw Error(error.kind(), what.starts_with(key) ? what : key + ": " + what);
    }

    static std::string sourceOf(const std::string& reference, const fs::path& folder) {
        constexpr std::string_view kFile = "file:";
        if (reference == "prompt" || reference.starts_with("prompt:")) return "-";
        return reference.starts_with(kFile) ? "@" + (folder / reference.substr(kFile.size())).string() : reference;
    }

    std::map<std::pair<std::string, std::string>, client::Secret> known_;
};

static bool isPolicy(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    std::ranges::transform(extension, extension.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return extension == ".toml";
}

static std::string beside(const std::string& path, const std::string& table) {
    return (fs::path(path).parent_path() / table).string();
}

static CameraFile readPolicy(const std::string& path, ReferencedSecrets& secrets) {
    const auto readTable = [&](const std::string& table) {
        const std::string other = beside(path, table);
        return client::PolicyTable{readWhole(other), secrets.readerFor(other)};
    };
    return client::readPolicyFile(readWhole(path), secrets.readerFor(path), readTable);
}

CameraFile loadCameraFile(const std::string& path) {
    ReferencedSecrets secrets;
    CameraFile file =
        isPolicy(path) ? readPolicy(path, secrets) : client::readCameraFile(readWhole(path), secrets.readerFor(path));
    if (!file.faults.empty()) throw faultsOf(path, file, file.faults);
    return file;
}

// A table that cannot be read is told of when the file is loaded.
static std::string textOfTable(const std::string& path, const std::string& text) try {
    const auto table = client::tableNamedIn(text);
    return table ? readWhole(beside(path, *table)) : "";
} catch (const Error&) {
    return "";
}

std::string digestOfCameraFile(const std::string& path) {
    const std::string text = readWhole(path);
    return isPolicy(path) ? digestOf(digestOf(text) + digestOf(textOfTable(path, text))) : digestOf(text);
}

std::string pathOf(const std::string& path, const CameraFile& file, client::Place place) {
    return place.file == 0 ? path : beside(path, file.table);
}

Error faultsOf(const std::string& path, const CameraFile& file, const std::vector<Fault>& faults) {
    constexpr size_t kMostShown = 100;
    std::string list;
    for (const Fault& fault : std::span(faults).first(std::min(faults.size(), kMostShown))) {
        const std::string column = fault.place.column > 0 ? " column " + std::to_string(fault.place.column) + ":" : "";
        list += "\n  " + printable(pathOf(path, file, fault.place)) + ":" + std::to_string(fault.place.line) + ":" +
                column + " " + printable(fault.text);
    }
    if (faults.size() > kMostShown) list += "\n  and " + std::to_string(faults.size() - kMostShown) + " more";
    return Error(ErrorKind::BadValue, "nothing is sent: " + printable(path) + " has " + std::to_string(faults.size()) +
                                          (faults.size() == 1 ? " fault" : " faults") + list);
}
