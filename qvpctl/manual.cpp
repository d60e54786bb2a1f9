#include "qvpctl/manual.h"

#include <algorithm>
#include <sstream>

#include "client/settings/setting.h"
#include "qvpctl/exit_code.h"

// A hyphen that is meant to be typed, a backslash, and a line that would be a request are written otherwise.
static std::string roff(const std::string& text) {
    std::string result;
    for (const char letter : text) {
        const bool opensLine = result.empty() || result.back() == '\n';
        if (opensLine && (letter == '.' || letter == '\'')) result += "\\&";
        if (letter == '-') result += '\\';
        result += letter == '\\' ? std::string("\\e") : std::string(1, letter);
    }
    return result;
}

static std::string lines(const std::string& text) { return text.ends_with("\n") ? text : text + "\n"; }

static std::string bold(const std::string& text) { return "\\fB" + roff(text) + "\\fR"; }
static std::string italic(const std::string& text) { return "\\fI" + roff(text) + "\\fR"; }

static std::string wordsOf(const CommandText& command) {
    std::string words;
    for (const OptionText& option : command.options) {
        if (!option.isWord) continue;
        const std::string name = italic(option.names.back()) + (option.isRepeated ? " ..." : "");
        words += " " + (option.isNeeded ? name : "[" + name + "]");
    }
    return words;
}

static std::string optionEntry(const OptionText& option) {
    std::string names;
    for (const std::string& name : option.names) names += (names.empty() ? "" : ", ") + bold(name);
    return ".TP\n" + names + (option.isFlag() ? "" : " " + italic(option.type)) + "\n" + roff(option.help) + "\n";
}

static std::string commandEntry(const Subcommand& command, const CommandText& text) {
    std::string entry = ".SS " + bold(command.name) + wordsOf(text) + "\n" + roff(command.summary) + "\n";
    for (const OptionText& option : text.options) {
        if (!option.isWord && !option.isCommon && option.names.back() != "--help") entry += optionEntry(option);
    }
    return entry + ".PP\n.nf\n" + lines(roff(command.examples)) + ".fi\n";
}

static std::string commonOptions(const CommandText& any) {
    std::string entries;
    for (const OptionText& option : any.options) {
        if (option.isCommon) entries += optionEntry(option);
    }
    return entries;
}

static std::string settings() {
    std::string entries;
    for (const client::Setting& setting : client::allSettings()) {
        const std::string quirk = *setting.quirk != '\0' ? "; " + std::string(setting.quirk) : "";
        entries += ".TP\n" + bold(setting.key) + "\n" + roff(setting.summary) + ": " + roff(setting.values) +
                   roff(quirk) + (setting.isReadOnly() ? " (read only)" : "") + "\n";
    }
    return entries;
}

static std::string exitStatus() {
    std::istringstream rows(exitStatusHelp());
    std::string entries, row;
    for (std::getline(rows, row); std::getline(rows, row);) {
        entries += ".TP\n.B " + row.substr(2, 1) + "\n" + roff(row.substr(5)) + "\n";
    }
    return entries;
}

static constexpr char kHead[] = R"(.\" Made by 'qvpctl help manual'.
.TH QVPCTL 1
.SH NAME
qvpctl \- find cameras on the local network and set them up
.SH SYNOPSIS
.B qvpctl
.I COMMAND
.RI [ CAMERA ]
.RI [ ARGUMENT ...]
.RI [ OPTION ...]
.br
.B qvpctl
.RI [ COMMAND ]
.B \-\-help
|
.B \-\-version
.SH DESCRIPTION
.B qvpctl
speaks to cameras by UDP datagrams on port 62976. It needs no privileges and no knowledge of the cameras' addresses. A
.I CAMERA
is named by its MAC, its address or its name; a name that more than one goes by is an error that lists them.
)";

static constexpr char kFoot[] = R"(.SH SECRETS
A secret never stands on the command line: its value is \fB@\fIFILE\fR (its first line), \fBenv:\fINAME\fR, or \fB\-\fR for
a prompt. It is in no output and no error; the names of files and of variables are.
.SH OUTPUT
Cameras may call themselves anything. In tables a control character, a character that hides or reorders text, and a byte
that is not UTF\-8 is shown as \fB\exHH\fR or \fB\eu{HHHH}\fR, and a backslash is doubled. JSON is plain ASCII: other
characters are escaped, and each piece that is not UTF\-8 becomes \fB\eufffd\fR. Its fields are those of
.IR docs/qvpctl.schema.json .
Colours and links are for terminals only; \fBNO_COLOR\fR in the environment leaves them out there, too.
.SH ENVIRONMENT
.TP
.B QVPCTL_USER\fR, \fBQVPCTL_PASSWORD
The administrator, where no option names one.
.TP
.B NO_COLOR
No colours and no links.
.TP
.B XDG_CACHE_HOME
Where the names of the last discovery are kept for completion; by default \fI~/.cache\fR.
.SH NOTES
A firewall on this machine must let the replies in: they come from port 62976 to the port the request left from, from an
address the request was not sent to.
)";

std::string manualPage(std::span<const Subcommand* const> commands, const std::vector<CommandText>& texts) {
    std::string page = kHead;
    page += ".SH COMMANDS\n";
    for (const Subcommand* command : commands) {
        page += commandEntry(*command, *std::ranges::find(texts, command->name, &CommandText::name));
    }
    page += ".SH OPTIONS OF EVERY COMMAND\n" + commonOptions(texts.front());
    page += ".SH SETTINGS\n" + settings();
    page += ".SH EXIT STATUS\n" + exitStatus();
    return page + kFoot;
}
