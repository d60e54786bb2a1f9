// One line on standard error for whoever runs the camera.
#pragma once

// Writes the text behind "qvp platform: " as one line.
void complain(const char* format, ...) __attribute__((format(printf, 1, 2)));
