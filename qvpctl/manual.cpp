#include "qvpctl/manual.h"

#include <algorithm>
#include <cctype>
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

static std::string ownOptions(const CommandText& text) {
    std::string entries;
    for (const OptionText& option : text.options) {
        if (!option.isWord && !option.isCommon && option.names.back() != "--help") entries += optionEntry(option);
    }
    return entries;
}

static std::string examples(const Subcommand& command) { return ".nf\n" + lines(roff(command.examples)) + ".fi\n"; }

static std::string commandEntry(const Subcommand& command, const CommandText& text) {
    return ".SS " + bold(command.name) + wordsOf(text) + "\n" + roff(command.summary) + "\n" + ownOptions(text) +
           ".PP\n" + examples(command);
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

static constexpr char kSecrets[] = R"(.SH SECRETS
A secret never stands on the command line: its value is \fB@\fIFILE\fR (its first line), \fBenv:\fINAME\fR, or \fB\-\fR for
a prompt. It is in no output and no error; the names of files and of variables are.
)";

static constexpr char kFoot[] = R"(.SH OUTPUT
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

// "qvpctl-get(1)", as man pages name each other.
static std::string reference(const Subcommand& command) { return ".BR qvpctl\\-" + roff(command.name) + " (1)"; }

static std::string seeAlso(std::span<const Subcommand* const> commands) {
    std::string entries = ".SH SEE ALSO\n";
    for (const Subcommand* command : commands) entries += reference(*command) + ",\n";
    return entries + ".BR qvp (8),\n.BR virtual\\-camera (1)\n";
}

std::string manualPage(std::span<const Subcommand* const> commands, const std::vector<CommandText>& texts) {
    std::string page = kHead;
    page += ".SH COMMANDS\n";
    for (const Subcommand* command : commands) {
        page += commandEntry(*command, *std::ranges::find(texts, command->name, &CommandText::name));
    }
    page += ".SH COMMON OPTIONS\n" + commonOptions(texts.front());
    page += ".SH SETTINGS\n" + settings();
    page += ".SH EXIT STATUS\n" + exitStatus();
    return page + kSecrets + kFoot + seeAlso(commands);
}

static std::string upper(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char letter) { return std::toupper(letter); });
    return text;
}

// "show settings of a camera": how a name is explained.
static std::string phrase(std::string sentence) {
    sentence[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(sentence[0])));
    if (sentence.ends_with(".")) sentence.pop_back();
    return sentence;
}

static std::string words(const CommandText& text) {
    std::string entries;
    for (const OptionText& option : text.options) {
        if (option.isWord) entries += ".TP\n" + italic(option.names.back()) + "\n" + roff(option.help) + "\n";
    }
    return entries;
}

static bool takes(const CommandText& text, const std::string& what) {
    return std::ranges::any_of(text.options,
                               [&](const OptionText& one) { return one.type == what || one.names.back() == what; });
}

std::string commandPage(const Subcommand& command, const CommandText& text) {
    const std::string name = std::string("qvpctl-") + command.name;
    std::string page = std::string(".\\\" Made by 'qvpctl help manual ") + command.name + "'.\n";
    page += ".TH " + roff(upper(name)) + " 1\n.SH NAME\n" + roff(name) + " \\- " + roff(phrase(command.summary)) + "\n";
    page += ".SH SYNOPSIS\n" + bold(std::string("qvpctl ") + command.name) + wordsOf(text) + " [\\fIOPTION\\fR ...]\n";
    page += ".SH DESCRIPTION\n" + roff(command.summary) + "\n" + words(text);
    page += ".SH OPTIONS\n" + ownOptions(text) + commonOptions(text);
    if (takes(text, "KEY") || takes(text, "KEY=VALUE")) page += ".SH SETTINGS\n" + settings();
    page += ".SH EXAMPLES\n" + examples(command) + ".SH EXIT STATUS\n" + exitStatus();
    if (takes(text, "SECRET") || takes(text, "KEY=VALUE")) page += kSecrets;
    return page + ".SH SEE ALSO\n.BR qvpctl (1)\n";
}
