// A small HTTP client: one GET, the whole body into memory.
#pragma once

#include <stdint.h>

// Fetches `path` and leaves the body in *data, on the heap; a buffer already there is freed. Returns -1 for a failure,
// 0 for an empty body, and for any other body the result of the select before its last piece. That is 1 when the socket
// was ready, which the callers take for a failure like any value but 0; only a last piece that comes just after its
// wait has timed out makes it 0.
int http_download(const char* host, long port, const char* path, uint8_t** data);

// Connects and sends the request. Returns 0, or -1: with *out -1, or untouched when the arguments will not do.
int send_http_get(int* out, const char* host, long port, const char* path);

// Reads byte by byte up to the blank line, which must end before the buffer's last byte. Returns 0, or -1.
int receive_http_header(int socket, char* buffer, int capacity);

// Opens a TCP connection in at most five attempts a second apart. Returns 1 with the non-blocking socket in *out, or 0.
int connect_with_retry(int* out, const char* host, long port);

// Writes the first IPv4 address of a name as dotted text. Returns 0, or -1 when the name does not resolve.
int resolve_host(const char* name, char (&out)[80]);
