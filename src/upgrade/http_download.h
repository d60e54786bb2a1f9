// A small HTTP client: one GET, the whole body into memory.
#pragma once

#include <stdint.h>

// Fetches `path` and leaves the body in *data, on the heap; a buffer already there is freed. Returns 0 for success. Any
// other value means failure to the callers, and also a body that had to be waited for: the result of the last select is
// returned as it is, so that of the complete downloads only one with an empty body succeeds.
int http_download(const char* host, long port, const char* path, uint8_t** data);

// Connects and sends the request. Returns 0, or -1 with *out -1.
int send_http_get(int* out, const char* host, long port, const char* path);

// Reads byte by byte up to the blank line, which must end before the buffer's last byte. Returns 0, or -1.
int receive_http_header(int socket, char* buffer, int capacity);

// Opens a TCP connection in at most five attempts a second apart. Returns 1 with the non-blocking socket in *out, or 0.
int connect_with_retry(int* out, const char* host, long port);

// Writes the first IPv4 address of a name as dotted text. Returns 0, or -1 when the name does not resolve.
int resolve_host(const char* name, char (&out)[80]);
