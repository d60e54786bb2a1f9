// The store between requests: read once, and yet never older than the request.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <random>
#include <string>

#include "common/moved_clock.h"
#include "store/store_fixture.h"
#include "support/file_calls.h"

// Within a request, unlike storedText().
static std::string name() {
    char text[256] = "";
    return cfgRead("CAMSYSTEM", "CameraName", text) == 0 ? text : "none";
}

static std::string nameInARequest() {
    requestBegins();
    return name();
}

static std::string storeWith(const std::string& name) { return "[CAMSYSTEM]\nCameraName=" + name + "\n"; }

// Before main(), so before any test tells of a request: an answer of each of two stores.
static const std::string g_untold = [] {
    const TemporaryFolder folder;
    const std::string path = (folder / "camera.ini").string();
    setenv("QVP_STORE", path.c_str(), 1);
    writeFile(path, storeWith("Gate"));
    std::string names = name();
    writeFile(path, storeWith("Yard"));
    names += " " + name();
    unsetenv("QVP_STORE");
    return names;
}();

TEST(KeptValuesOfNoRequest, AreNone) { EXPECT_EQ(g_untold, "Gate Yard"); }

class KeptValues : public StoreTest {
protected:
    // How often the store is opened for that.
    template <typename Work>
    static int opensDuring(Work work) {
        int opens = 0;
        const CaughtFileCalls caught({.before = [&](const std::string& call) { opens += call.starts_with("open"); }});
        work();
        return opens;
    }

    // Has the store read when its times tell everything.
    void settle() const {
        nameInARequest();
        moveClock(60);
        nameInARequest();
        ASSERT_EQ(opensDuring([] { nameInARequest(); }), 0);
        awaitNextTick(path());
    }

    void replace(const std::string& bytes) const {
        writeFile(path() + ".other", bytes);
        ASSERT_EQ(std::rename((path() + ".other").c_str(), path().c_str()), 0);
    }

    void overwrite(const std::string& bytes) const {
        const int file = open(path().c_str(), O_WRONLY | O_CLOEXEC);
        ASSERT_EQ(write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        close(file);
    }

    struct stat status() const {
        struct stat status = {};
        EXPECT_EQ(stat(path().c_str(), &status), 0);
        return status;
    }

    void setModified(timespec time) const {
        const timespec times[] = {time, time};
        ASSERT_EQ(utimensat(AT_FDCWD, path().c_str(), times, 0), 0);
    }
};

TEST_F(KeptValues, AreReadOnceARequest) {
    put(storeWith("Gate"));
    EXPECT_EQ(opensDuring([] {
                  requestBegins();
                  for (int i = 0; i < 5; i++) EXPECT_EQ(name(), "Gate");
              }),
              1);
}

TEST_F(KeptValues, AreThoseOfTheRequestsBeginning) {
    put(storeWith("Gate"));
    EXPECT_EQ(nameInARequest(), "Gate");
    replace(storeWith("Yard"));
    EXPECT_EQ(name(), "Gate");
    EXPECT_EQ(nameInARequest(), "Yard");
}

TEST_F(KeptValues, AWriteOfOnesOwnIsSeenAtOnce) {
    put(storeWith("Gate"));
    settle();
    EXPECT_EQ(nameInARequest(), "Gate");
    EXPECT_EQ(writeText("CAMSYSTEM", "CameraName", "Yard"), 0);
    EXPECT_EQ(name(), "Yard");
    EXPECT_EQ(nameInARequest(), "Yard");
}

// One after the other in a request, of keys before and behind each other, shorter and longer ones, with and without
// quotes, some of them new; now and then somebody else adds a line at the top.
TEST_F(KeptValues, FollowManyWritesOfOnesOwn) {
    struct Key {
        const char* section;
        const char* name;
    };
    static constexpr Key kKeys[] = {
        {"INFO", "Product"}, {"CAMSYSTEM", "CameraName"}, {"DDNS", "UID"}, {"DDNS", "PWD"}, {"DDNS", "HOST"}};
    std::mt19937 random(7);
    std::map<std::string, std::string> expected = {{"Product", "p"}, {"UID", "u"}};
    put("[INFO]\nProduct=p\n[DDNS]\nUID=u\n\n[OTHER]\nUID=theirs\n");
    requestBegins();
    for (int step = 0; step < 400; step++) {
        const Key& key = kKeys[random() % std::size(kKeys)];
        const std::string text(random() % 40, "ab \"="[random() % 5]);
        if (random() % 8 == 0) put("; " + std::to_string(step) + "\n" + bytes());
        if (random() % 8 == 0) requestBegins();
        ASSERT_EQ(writeText(key.section, key.name, text), 0);
        expected[key.name] = text;
        for (const Key& other : kKeys) {
            char stored[256] = "";
            const bool isThere = cfgRead(other.section, other.name, stored) == 0;
            ASSERT_EQ(isThere, expected.contains(other.name)) << other.name;
            ASSERT_EQ(stored, isThere ? expected[other.name] : "") << other.name << " after " << step;
        }
    }
    EXPECT_NE(bytes().find("[OTHER]\nUID=theirs\n"), std::string::npos);
}

// What a write has read is not what stands in the store, and its own text is not either.
TEST_F(KeptValues, AWriteThatFailsChangesNone) {
    put(storeWith("Gate"));
    bool reached = true;
    for (int step = 1; reached; step++) {
        put(storeWith("Gate"));
        settle();
        {
            CaughtFileCalls caught({.failAt = step, .error = EIO});
            writeText("CAMSYSTEM", "CameraName", "Yard");
            reached = caught.made() >= step;
        }
        const std::string stands = bytes() == storeWith("Gate") ? "Gate" : "Yard";
        EXPECT_EQ(name(), stands) << step;
        EXPECT_EQ(nameInARequest(), stands) << step;
    }
}

// Within one tick of the clock that file systems have, size and times may stay the same.
TEST_F(KeptValues, AChangeInTheSameTickIsSeen) {
    put(storeWith("name 000"));
    for (int i = 0; i < 300; i++) {
        char text[16];
        snprintf(text, sizeof text, "name %03d", i);
        overwrite(storeWith(text));
        ASSERT_EQ(nameInARequest(), text);
    }
}

// ... and one in a file system that counts in steps of two seconds.
TEST_F(KeptValues, AreNotTrustedBeforeALongStepIsOver) {
    put(storeWith("Gate"));
    nameInARequest();
    moveClock(2);
    EXPECT_EQ(opensDuring([] { nameInARequest(); }), 1);
    EXPECT_EQ(opensDuring([] { nameInARequest(); }), 1);
}

TEST_F(KeptValues, AreNotTrustedBecauseTheirReaderWasHeldUp) {
    put(storeWith("Gate"));
    nameInARequest();
    {
        const CaughtFileCalls caught({.before = [](const std::string& call) {
            if (call == "read") moveClock(4);
        }});
        nameInARequest();
    }
    EXPECT_EQ(opensDuring([] { nameInARequest(); }), 1);
}

TEST_F(KeptValues, OfASettledStoreANewFileIsSeen) {
    put(storeWith("Gate"));
    settle();
    replace(storeWith("Hall"));
    EXPECT_EQ(nameInARequest(), "Hall");
}

TEST_F(KeptValues, OfASettledStoreAChangeInPlaceIsSeen) {
    put(storeWith("Gate"));
    settle();
    overwrite(storeWith("Yard"));
    EXPECT_EQ(nameInARequest(), "Yard");
}

TEST_F(KeptValues, OfASettledStoreAChangeThatHidesItsTimeIsSeen) {
    put(storeWith("Gate"));
    settle();
    const timespec modified = status().st_mtim;
    overwrite(storeWith("Shed"));
    setModified(modified);
    EXPECT_EQ(nameInARequest(), "Shed");
}

// Two files made in one tick: nothing but their numbers tells them apart.
TEST_F(KeptValues, OfASettledStoreATwinIsSeen) {
    const std::string twin = path() + ".twin";
    put(storeWith("Gate"));
    const auto link = [&](const std::string& from) {
        std::remove((path() + ".link").c_str());
        ASSERT_EQ(symlink(from.c_str(), (path() + ".link").c_str()), 0);
    };
    struct stat other = {};
    do {
        put(storeWith("Gate"));
        writeFile(twin, storeWith("Yard"));
        const timespec times[] = {{.tv_sec = 5, .tv_nsec = 0}, {.tv_sec = 5, .tv_nsec = 0}};
        utimensat(AT_FDCWD, path().c_str(), times, 0);
        utimensat(AT_FDCWD, twin.c_str(), times, 0);
        ASSERT_EQ(stat(twin.c_str(), &other), 0);
    } while (status().st_ctim.tv_nsec != other.st_ctim.tv_nsec);
    link(path());
    setenv("QVP_STORE", (path() + ".link").c_str(), 1);
    settle();
    link(twin);
    EXPECT_EQ(nameInARequest(), "Yard");
}

TEST_F(KeptValues, OfASettledStoreItsEndAndItsReturnAreSeen) {
    put(storeWith("Gate"));
    settle();
    ASSERT_EQ(std::remove(path().c_str()), 0);
    EXPECT_EQ(nameInARequest(), "none");
    put(storeWith("Back"));
    EXPECT_EQ(nameInARequest(), "Back");
}

TEST_F(KeptValues, OfASettledStoreThatCannotBeReadAnyMoreAreNone) {
    put(storeWith("Gate"));
    settle();
    replace(std::string(65 * 1024, 'x'));
    EXPECT_EQ(nameInARequest(), "none");
    EXPECT_EQ(name(), "none");
}
