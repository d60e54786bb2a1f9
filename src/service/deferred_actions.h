// What handlers asked for, done once their reply has left.
#pragma once

// Takes every pending flag, in a fixed order, and runs its commands.
void runDeferredActions();
