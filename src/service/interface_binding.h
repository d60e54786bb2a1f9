// The tie between the socket and the served interface.
#pragma once

// Called before every report. An interface that was deleted and made again, as a radio is that was reset, is another
// one to the system: puts a socket that is bound to it in the place of the old one, and asks for its MAC. One that got
// another name is served, but nothing is found out about it by the old one: says so once.
void keepBoundToInterface();
