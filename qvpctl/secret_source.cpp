#include "qvpctl/secret_source.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "client/error.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/terminal_text.h"

using client::Error;
using client::ErrorKind;
using client::localError;
using client::Secret;

static Secret readFirstLine(const std::string& path) {
    errno = 0;
    std::ifstream file(path);
    std::string line;
    if (!file || (!std::getline(file, line) && file.bad())) {
        throw localError("cannot read " + printable(path), errno != 0 ? errno : EIO);
    }
    if (line.empty() && file.eof()) throw Error(ErrorKind::BadValue, printable(path) + " is empty");
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return Secret(line);
}

static Secret readVariable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) throw Error(ErrorKind::BadValue, "there is no environment variable " + printable(name));
    return Secret(value);
}

// The terminal, also where standard input and output are something else.
class Terminal {
public:
    Terminal() : file_(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {
        if (file_ >= 0) tcgetattr(file_, &before_);
    }
    ~Terminal() {
        if (file_ < 0) return;
        tcsetattr(file_, TCSAFLUSH, &before_);
        close(file_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool isThere() const { return file_ >= 0; }

    // Throws Error Local when the user gives up, by a signal or the end of input: the terminal is as before then.
    Secret ask(const std::string& question) const {
        const StopSignal stop;
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(file_, TCSAFLUSH, &silent);
        say(question);
        std::string line;
        const bool isWhole = readLine(line, stop.descriptor());
        say("\n");
        tcsetattr(file_, TCSAFLUSH, &before_);
        if (isWhole) return Secret(line);
        throw Error(ErrorKind::Local, "nothing was entered");
    }

private:
    bool readLine(std::string& line, int stop) const {
        for (char letter = '\0';;) {
            pollfd ready[] = {
                {file_, POLLIN, 0},
                {stop,  POLLIN, 0},
            };
            if (poll(ready, std::size(ready), -1) < 0 && errno != EINTR) return false;
            if (ready[1].revents != 0 || (ready[0].revents != 0 && read(file_, &letter, 1) != 1)) return false;
            if (ready[0].revents == 0) continue;
            if (letter == '\n') return true;
            line += letter;
        }
    }

    void say(const std::string& text) const {
        const ssize_t written = write(file_, text.data(), text.size());
        static_cast<void>(written);
    }

    int file_;
    termios before_{};
};

static Secret askTwice(const std::string& key) {
    const Terminal terminal;
    if (!terminal.isThere()) throw Error(ErrorKind::BadValue, key + "=- asks on a terminal, and there is none");
    Secret first = terminal.ask("New " + key + ": ");
    if (terminal.ask("Again: ").reveal() != first.reveal()) {
        throw Error(ErrorKind::BadValue, "the two answers for " + key + " are not the same");
    }
    return first;
}

bool isSecretSource(const std::string& source) {
    return source.starts_with("@") || source.starts_with("env:") || source == "-";
}

Secret readSecret(const std::string& key, const std::string& source) {
    if (source.starts_with("@")) return readFirstLine(source.substr(1));
    if (source.starts_with("env:")) return readVariable(source.substr(4));
    if (source == "-") return askTwice(key);
    throw Error(ErrorKind::BadValue, key + " is a secret and must not stand on the command line: use " + key +
                                         "=@FILE, " + key + "=env:NAME, or " + key + "=- to be asked");
}

static Secret readPassword(const CommonOptions& options, const std::string& user) {
    if (!options.passwordFile.empty()) return readFirstLine(options.passwordFile);
    if (std::getenv("QVPCTL_PASSWORD") != nullptr) return readVariable("QVPCTL_PASSWORD");
    const Terminal terminal;
    if (!terminal.isThere()) {
        throw Error(ErrorKind::BadValue, "a password is needed: --password-file, or the environment's QVPCTL_PASSWORD");
    }
    return terminal.ask("Password of " + printable(user) + ": ");
}

client::Login readLogin(const CommonOptions& options) {
    const char* variable = std::getenv("QVPCTL_USER");
    const std::string user = !options.user.empty() ? options.user : variable != nullptr ? variable : "admin";
    return {user, readPassword(options, user)};
}
