// The store between requests: read once, and yet never older than the request.
#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <thread>

#include "store/store_fixture.h"
#include "support/file_calls.h"

class KeptValues : public StoreTest {
protected:
    static std::string storeWith(const std::string& name) { return "[CAMSYSTEM]\nCameraName=" + name + "\n"; }

    static std::optional<std::string> name() { return storedText("CAMSYSTEM", "CameraName"); }

    static std::optional<std::string> nameInARequest() {
        requestBegins();
        return name();
    }

    // How often the store is opened for that.
    template <typename Work>
    static int opensDuring(Work work) {
        int opens = 0;
        FileCalls calls;
        calls.before = [&](const std::string& call) { opens += call == "open" ? 1 : 0; };
        const CaughtFileCalls caught(calls);
        work();
        return opens;
    }

    // Until a request does without reading: then its times tell everything.
    void settle() const {
        while (opensDuring([] { nameInARequest(); }) > 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
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
    EXPECT_EQ(nameInARequest(), "Gate");
    EXPECT_EQ(writeText("CAMSYSTEM", "CameraName", "Yard"), 0);
    EXPECT_EQ(name(), "Yard");
}

// Within one tick of the clock that file systems have, size and times stay the same.
TEST_F(KeptValues, AChangeInTheSameTickIsSeen) {
    put(storeWith("name 000"));
    for (int i = 0; i < 300; i++) {
        char text[16];
        snprintf(text, sizeof text, "name %03d", i);
        overwrite(storeWith(text));
        ASSERT_EQ(nameInARequest(), text);
    }
}

TEST_F(KeptValues, OfASettledStoreEveryChangeIsSeen) {
    put(storeWith("Gate"));
    settle();
    overwrite(storeWith("Yard"));
    EXPECT_EQ(nameInARequest(), "Yard");

    settle();
    replace(storeWith("Hall"));
    EXPECT_EQ(nameInARequest(), "Hall");

    settle();
    struct stat before;
    ASSERT_EQ(stat(path().c_str(), &before), 0);
    overwrite(storeWith("Shed"));
    const timespec times[] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(utimensat(AT_FDCWD, path().c_str(), times, 0), 0);
    EXPECT_EQ(nameInARequest(), "Shed");

    settle();
    ASSERT_EQ(std::remove(path().c_str()), 0);
    EXPECT_EQ(nameInARequest(), std::nullopt);
    put(storeWith("Back"));
    EXPECT_EQ(nameInARequest(), "Back");
}

TEST_F(KeptValues, OfASettledStoreThatCannotBeReadAreNone) {
    put(storeWith("Gate"));
    settle();
    replace(std::string(65 * 1024, 'x'));
    EXPECT_EQ(nameInARequest(), std::nullopt);
    EXPECT_EQ(name(), std::nullopt);
}
