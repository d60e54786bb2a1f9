#include "client/error.h"

#include <cstring>

namespace client {

Error localError(const std::string& what, int error) {
    return Error(ErrorKind::Local, what + ": " + std::strerror(error));
}

}  // namespace client
