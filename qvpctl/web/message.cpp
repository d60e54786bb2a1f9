#include "qvpctl/web/message.h"

#include <strings.h>

#include "qvpctl/exit_code.h"

void wipe(std::string& text) {
    text.resize(text.capacity());
    for (volatile char& byte : text) byte = '\0';
    text.clear();
}

WebRequest::~WebRequest() { wipe(body); }

std::vector<std::string> WebRequest::all(const char* name) const {
    std::vector<std::string> values;
    for (const auto& [key, value] : headers) {
        if (strcasecmp(key.c_str(), name) == 0) values.push_back(value);
    }
    return values;
}

std::string WebRequest::first(const char* name) const {
    const std::vector<std::string> values = all(name);
    return values.empty() ? "" : values.front();
}

WebAnswer jsonAnswer(const Record& record, unsigned status) {
    return {status, "application/json", jsonLine(record), {}};
}

WebAnswer emptyAnswer(unsigned status) { return {status, "", "", {}}; }

static Record errorRecord(const char* code, const std::string& message) {
    return {
        {"code",    code   },
        {"message", message}
    };
}

Record errorRecord(const client::Error& error) { return errorRecord(stableName(error.kind()), error.what()); }

WebAnswer errorAnswer(unsigned status, const char* code, const std::string& message) {
    return jsonAnswer(
        {
            {"error", errorRecord(code, message)}
    },
        status);
}

static unsigned statusOf(client::ErrorKind kind) {
    switch (kind) {
        case client::ErrorKind::NotFound:
            return 404;
        case client::ErrorKind::Ambiguous:
        case client::ErrorKind::BadValue:
            return 400;
        case client::ErrorKind::Credentials:
            return 401;
        case client::ErrorKind::Refused:
        case client::ErrorKind::Unverified:
            return 502;
        case client::ErrorKind::Local:
            return 500;
    }
    return 500;
}

WebAnswer errorAnswer(const client::Error& error) {
    return errorAnswer(statusOf(error.kind()), stableName(error.kind()), error.what());
}
