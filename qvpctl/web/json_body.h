// What the page sends: JSON that is not trusted.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "client/error.h"
#include "client/secret.h"
#include "client/settings/change.h"

// What is thrown for what the page should not have sent.
client::Error bad(const std::string& what);

// Its texts are overwritten at its end, as they may be secrets.
class JsonBody {
public:
    // Throws Error BadValue for what is no object, or deeper than any request is. Nothing of the text is repeated.
    explicit JsonBody(const std::string& text);
    ~JsonBody();
    JsonBody(const JsonBody&) = delete;
    JsonBody& operator=(const JsonBody&) = delete;

    // Each throws Error BadValue for a value that is not there, or of another kind.
    std::string text(const char* key) const;
    client::Secret secret(const char* key) const;
    std::string textOr(const char* key, const std::string& otherwise) const;  // also for null
    uint32_t count(const char* key, uint32_t otherwise, uint32_t most) const;
    std::vector<client::Assignment> settings() const;
    const nlohmann::json& root() const { return root_; }

private:
    nlohmann::json root_;
};

// {KEY: VALUE}. Throws Error BadValue for keys that are unknown or can only be read.
std::vector<client::Assignment> assignmentsOf(const nlohmann::json& settings);
