"""A key of the store is read and written as its type; anything else does not compile.

Usage: store_keys_test.py SOURCE_FOLDER COMPILER
"""
import subprocess
import sys

RIGHT = [
    "write(kCameraName, text);",
    "write(kHttpPort, 80);",
    "write(kUpnpEnable, flag);",
    "read(kCameraName, text);",
    "const int32_t port = read(kHttpPort); (void)port;",
    "const uint16_t version = read(kMainVersion); (void)version;",
    "flag = read(kUpnpEnable);",
    "readInto(kUpnpEnable, flag);",
]
WRONG = [
    "write(kCameraName, 5);",
    "write(kCameraName, shortText);",
    "write(kHttpPort, text);",
    "write(kUpnpEnable, text);",
    "write(kUpnpEnable, number);",
    "write(kMainVersion, 1);",
    "read(kHttpPort, text);",
    "read(kCameraName, shortText);",
    "flag = read(kCameraName);",
    "flag = read(kHttpPort);",
    "flag = read(kMainVersion);",
    "readInto(kHttpPort, flag);",
    "readInto(kUpnpEnable, number);",
    'write("CAMSYSTEM", text);',
    "const FlagKey key = kHttpPort; (void)key;",
]
FLAGS = ["-std=c++20", "-Wall", "-Wextra", "-Wconversion", "-Werror", "-fsyntax-only", "-x", "c++", "-"]


def compiles(top, compiler, statements):
    code = '#include "camera/settings.h"\nvoid use(char (&text)[kTextSize], char (&shortText)[64], int32_t number, uint8_t& flag);\n'
    code += "void use(char (&text)[kTextSize], char (&shortText)[64], int32_t number, uint8_t& flag) {\n"
    code += f"(void)text; (void)shortText; (void)number; (void)flag;\n{statements}\n}}\n"
    command = [compiler, f"-I{top}/src", f"-I{top}/platform", f"-I{top}", *FLAGS]
    return subprocess.run(command, input=code, text=True, capture_output=True, check=False)


def main(top, compiler):
    faults = 0
    allowed = compiles(top, compiler, "\n".join(RIGHT))
    if allowed.returncode != 0:
        print(f"does not compile:\n{allowed.stderr}")
        faults += 1
    for statement in WRONG:
        if compiles(top, compiler, statement).returncode == 0:
            print(f"compiles: {statement}")
            faults += 1
    print(f"{len(RIGHT)} uses that compile, {len(WRONG)} that do not")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
