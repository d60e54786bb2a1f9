// What was done to many cameras, on disk before it is done: to go on after a run that was cut off, and to put back what
// was there. No secret stands in it.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "client/fleet/camera_job.h"
#include "qvpctl/fleet/change_run.h"

// A file that no other run works with as long as this lives.
class LockedFile {
public:
    // Throws Error Local for a file that cannot be opened, or that another run has.
    LockedFile(const std::string& path, int flags);
    LockedFile(LockedFile&& other) noexcept;
    LockedFile& operator=(LockedFile&&) = delete;
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;
    ~LockedFile();

    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

// What a camera had before its first change.
struct CameraBefore {
    std::map<std::string, std::string> changed;  // settings that were changed, with their values
    std::map<std::string, std::string> basic;    // the rest of its name, port and address, for one that cannot be asked
    std::set<std::string> lost;                  // settings that were changed, and cannot be put back
    std::string wanted;                          // digest of what the file wanted of it
};

struct JournalContent {
    std::string digest;                          // of the file that was applied
    bool isOver = false;                         // the run came to its end
    std::map<std::string, CameraBefore> before;  // by MAC
};

// Throws Error Local for a file that cannot be read, and BadValue for one that is no journal. A line that was cut off
// is none.
JournalContent readJournal(const std::string& path);

// Tells files apart, and what is wanted of a camera; a secret counts for nothing.
std::string digestOf(const std::string& text);
std::string digestOf(const std::vector<client::Assignment>& assignments);

class Journal {
public:
    // A new one; throws Error Local. An older one is kept as PATH.1, PATH.2 and so on.
    static Journal begin(const std::string& path, const std::string& digest);

    // Goes on with one that is there.
    static Journal goOn(const std::string& path);

    // Each is on disk when it returns. Throws Error Local.
    void noteBefore(const client::CameraPlan& plan);
    void noteAfter(const Outcome& outcome);
    void noteEnd();

private:
    explicit Journal(LockedFile file) : file_(std::move(file)) {}
    void write(const Record& record);

    LockedFile file_;
};
