// The presence report: broadcast at start-up and every 30 seconds, so that a tool that only listens learns of the
// camera.
#pragma once

#include <stdint.h>

// Builds the next report in a zeroed buffer. Returns its length, or -1 when `capacity` is too small.
int general_report(uint8_t* buffer, int capacity);

// Broadcasts one report; the handler of SIGALRM. Nothing happens once a stop was asked for, or without a socket.
void sendPresenceReport(int signalNumber);

// Starts and stops the timer that raises SIGALRM.
void armPresenceTimer();
void disarmPresenceTimer();
