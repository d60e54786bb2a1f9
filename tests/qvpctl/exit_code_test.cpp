#include "qvpctl/exit_code.h"

#include <gmock/gmock.h>

using client::ErrorKind;

TEST(ExitCode, OfEachKindOfError) {
    struct Row {
        ErrorKind kind;
        int code;
        const char* name;
    };
    const Row rows[] = {
        {ErrorKind::NotFound, 1, "not-found"},
        {ErrorKind::Ambiguous, 2, "ambiguous"},
        {ErrorKind::BadValue, 2, "bad-value"},
        {ErrorKind::Local, 3, "this-machine"},
        {ErrorKind::Credentials, 4, "credentials-refused"},
        {ErrorKind::Refused, 5, "refused"},
        {ErrorKind::Unverified, 6, "unverified"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(exitCodeOf(row.kind), row.code) << row.name;
        EXPECT_STREQ(stableName(row.kind), row.name);
        EXPECT_THAT(exitStatusHelp(), testing::HasSubstr("\n  " + std::to_string(row.code) + "  "));
    }
    EXPECT_THAT(exitStatusHelp(), testing::HasSubstr("\n  7  with --exit-code: a camera is not as the file has it"));
}
