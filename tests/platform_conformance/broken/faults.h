// A platform library that breaks one promise at a time: the one that QVP_FAULT names, "operation fault". Everything
// else goes through to the library behind it.
#pragma once

// True when the operation has this fault.
bool isBroken(const char* operation, const char* fault);

// Opens a descriptor and forgets it when the operation's fault is "leaks".
void leakOf(const char* operation);

// What the fault "result" gives in place of 0 and -1; else the result itself.
int resultOf(const char* operation, int result);

// The faults of an operation that fills a variable of that size: "touches" although it has none, writes "behind" it or
// "before" it.
int spoil(const char* operation, int result, void* out, unsigned long size);

// Forgets what usrGetGroupName gave, if that is its fault.
void forgetGroup();
