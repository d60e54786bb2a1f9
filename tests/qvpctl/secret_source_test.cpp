#include "qvpctl/secret_source.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "client/error.h"

using client::Error;
using client::ErrorKind;
using testing::HasSubstr;
using testing::Not;

class SecretSource : public testing::Test {
protected:
    SecretSource() {
        char name[] = "/tmp/secret-source-XXXXXX";
        folder_ = mkdtemp(name);
        for (const char* variable : {"QVPCTL_USER", "QVPCTL_PASSWORD"}) unsetenv(variable);
    }
    ~SecretSource() override { std::filesystem::remove_all(folder_); }

    std::string file(const std::string& content) {
        const std::string path = folder_ / "secret";
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    static Error errorOf(const std::function<void()>& work) try {
        work();
        return Error(ErrorKind::NotFound, "");
    } catch (const Error& error) {
        return error;
    }

    std::filesystem::path folder_;
};

TEST_F(SecretSource, AFilesFirstLine) {
    const std::pair<std::string, std::string> rows[] = {
        {"hidden", "hidden"},       {"hidden\n", "hidden"},
        {"hidden\r\n", "hidden"},   {"hidden\nmore\n", "hidden"},
        {" hidden ", " hidden "},   {"\n", ""},
        {"\xff\xfe\n", "\xff\xfe"}, {std::string("a\0b\n", 4), std::string("a\0b", 3)},
    };
    for (const auto& [content, secret] : rows) {
        EXPECT_EQ(readSecret("wifi.key", "@" + file(content)).reveal(), secret);
    }
}

TEST_F(SecretSource, AnEmptyFileIsAMistake) {
    const std::string path = file("");
    const Error error = errorOf([&] { readSecret("wifi.key", "@" + path); });
    EXPECT_EQ(error.kind(), ErrorKind::BadValue);
    EXPECT_EQ(error.what(), path + " is empty");
}

TEST_F(SecretSource, AFileThatCannotBeReadIsNamed) {
    const std::pair<std::string, std::string> rows[] = {{folder_ / "missing", "No such file or directory"},
                                                        {folder_, "Is a directory"},
                                                        {"", "No such file or directory"}};
    for (const auto& [path, reason] : rows) {
        const Error error = errorOf([&, &file = path] { readSecret("wifi.key", "@" + file); });
        EXPECT_EQ(error.kind(), ErrorKind::Local);
        EXPECT_EQ(error.what(), "cannot read " + path + ": " + reason);
    }
}

TEST_F(SecretSource, AnEnvironmentVariable) {
    setenv("QVPCTL_TEST_SECRET", "hidden", 1);
    EXPECT_EQ(readSecret("wifi.key", "env:QVPCTL_TEST_SECRET").reveal(), "hidden");
    unsetenv("QVPCTL_TEST_SECRET");
    const Error error = errorOf([] { readSecret("wifi.key", "env:QVPCTL_TEST_SECRET"); });
    EXPECT_EQ(error.kind(), ErrorKind::BadValue);
    EXPECT_THAT(error.what(), HasSubstr("QVPCTL_TEST_SECRET"));
}

TEST_F(SecretSource, APlainValueIsRefusedAndNotShown) {
    for (const char* source : {"MARKED", "", "file:MARKED", " @MARKED", "ENV:MARKED", "--MARKED"}) {
        const Error error = errorOf([&] { readSecret("wifi.key", source); });
        EXPECT_EQ(error.kind(), ErrorKind::BadValue) << source;
        EXPECT_THAT(error.what(), HasSubstr("wifi.key=@FILE, wifi.key=env:NAME, or wifi.key=-")) << source;
        EXPECT_THAT(error.what(), Not(HasSubstr("MARKED")));
    }
}

TEST_F(SecretSource, ALoginIsOfTheOptionsElseOfTheEnvironment) {
    setenv("QVPCTL_PASSWORD", "of the environment", 1);
    CommonOptions options;
    EXPECT_EQ(readLogin(options).user, "admin");
    EXPECT_EQ(readLogin(options).password.reveal(), "of the environment");
    setenv("QVPCTL_USER", "somebody", 1);
    EXPECT_EQ(readLogin(options).user, "somebody");
    options.user = "me";
    options.passwordFile = file("of the file\n");
    EXPECT_EQ(readLogin(options).user, "me");
    EXPECT_EQ(readLogin(options).password.reveal(), "of the file");
}
