// Files of cameras that users bring: tables (CSV) and policies (TOML), with a table beside them.
//
// An input is a letter, 't' for a table and 'p' for a policy, and the file; behind a NUL byte in a policy stands the
// table that it may name.
#include <algorithm>
#include <cstring>

#include "client/error.h"
#include "client/fleet/camera_file.h"
#include "client/fleet/csv.h"
#include "client/fleet/policy_file.h"
#include "client/fleet/settle.h"
#include "client/fleet/toml_text.h"
#include "fuzz/fuzz.h"

using namespace client;
using fuzz::require;

static const std::string kSecret = "never to be shown";

static Secret readSecret(const std::string&, const std::string& reference) {
    if (reference.ends_with("missing")) throw Error(ErrorKind::Local, "there is no such secret");
    return Secret(kSecret);
}

static std::string quoted(const std::string& text) {
    std::string cell = "\"";
    for (const char letter : text) cell += letter == '"' ? "\"\"" : std::string(1, letter);
    return cell + "\"";
}

static std::string tableOf(const Csv& csv) {
    std::string text;
    for (const CsvRow& row : csv.rows) {
        for (const CsvCell& cell : row) text += (&cell != row.data() ? "," : "") + quoted(cell.text);
        text += "\n";
    }
    return text;
}

static void checkTable(std::string_view text) {
    const Csv csv = parseCsv(text);
    const auto lines = static_cast<size_t>(std::ranges::count(text, '\n') + std::ranges::count(text, '\r')) + 1;
    for (const CsvRow& row : csv.rows) {
        for (const CsvCell& cell : row) {
            require(cell.place.line >= 1 && cell.place.line <= lines, "a cell stands in a line of the file");
            plainCell(cell.text);
        }
    }
    if (!csv.faults.empty()) return;
    const Csv again = parseCsv(tableOf(csv));
    require(again.faults.empty() && tableOf(again) == tableOf(csv), "a table in quotes is the same table");
}

static void checkFile(const CameraFile& file, std::string_view text) {
    const bool isNoSecret = text.find(kSecret) != text.npos;
    for (const Fault& fault : file.faults) {
        require(!fault.text.empty(), "a fault has words");
        require(isNoSecret || fault.text.find(kSecret) == fault.text.npos, "a fault shows no secret");
    }
    for (const FileCamera& camera : file.cameras) {
        require(camera.assignments.size() == camera.places.size(), "every value has its place");
        require(file.faults.empty() ? camera.isSound : true, "a file without faults has sound cameras");
    }
    if (file.faults.empty()) require(settle(file, {}).cameras.size() == file.cameras.size(), "no camera is lost");
}

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    const uint8_t kind = input.byte();
    if (kind == 't') {
        const std::string_view text = input.rest();
        checkTable(text);
        checkFile(readCameraFile(text, readSecret), text);
    }
    if (kind == 'p') {
        const std::string toml(input.upTo('\0'));
        const std::string table(input.rest());
        tableNamedIn(toml);
        for (const Fault& fault : parseToml(toml).faults) {
            require(fault.text.find("MARKED") == fault.text.npos, "what is no TOML is not repeated");
        }
        checkFile(readPolicyFile(toml, readSecret,
                                 [&](const std::string&) {
                                     return PolicyTable{table, readSecret};
                                 }),
                  toml + table);
    }
    return 0;
}
