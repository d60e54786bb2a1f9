// A request of the browser and what it is answered.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "client/error.h"
#include "qvpctl/output.h"

struct WebRequest {
    std::string method;
    std::string path;  // without what stands behind '?'
    std::vector<std::pair<std::string, std::string>> headers;
    std::string token;   // of the address; "" for none
    std::string cookie;  // that of this server; "" for none
    std::string body;

    // Nothing of it is left in memory.
    ~WebRequest();
    WebRequest() = default;
    WebRequest(const WebRequest&) = delete;
    WebRequest& operator=(const WebRequest&) = delete;

    // The values of that header, in any case.
    std::vector<std::string> all(const char* name) const;
    std::string first(const char* name) const;  // "" for none
    bool isApi() const { return path.starts_with("/api/"); }
};

struct WebAnswer {
    unsigned status = 200;
    std::string type;
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
};

// An answer, or the way to one that takes its time.
using LaterAnswer = std::function<WebAnswer()>;
using Reaction = std::variant<WebAnswer, LaterAnswer>;

WebAnswer jsonAnswer(const Record& record, unsigned status = 200);
WebAnswer emptyAnswer(unsigned status);
WebAnswer errorAnswer(unsigned status, const char* code, const std::string& message);
WebAnswer errorAnswer(const client::Error& error);
Record errorRecord(const client::Error& error);

// Overwrites what it holds.
void wipe(std::string& text);
