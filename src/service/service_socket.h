// The UDP socket of the service: the steps that make it, each returning what the system call does.
#pragma once

// Returns -1 with EMFILE for one beyond those that select can wait for.
int openSocket();

int bindToInterface(int socket, const char* interfaceName);
int allowBroadcast(int socket);
int allowReuse(int socket);
int bindToPort(int socket);
