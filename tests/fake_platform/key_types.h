// The keys a camera's store knows, with their types.
#pragma once

#include <string>

namespace fake {

enum class KeyType { Unknown, Text, Number, Number16, Flag };

KeyType keyType(const std::string& section, const std::string& key);

}  // namespace fake
