// Makes calls of this process fail, or kills it there: a program that links this calls the functions of
// fault_calls.cpp instead of the system's, and so do the libraries that it uses.
#pragma once

namespace selvane::faults {

enum class Calls {
  kFiles,   // what makes, writes, syncs, names, locks, closes and removes files
  kMemory,  // what allocates
};

enum class Fault {
  kNone,    // calls are counted only
  kOnce,    // the chosen call fails
  kOnward,  // it fails and so does every later one that needs room, as on a full disk and out of memory
  kKill,    // the process is killed there, in the middle of what it writes
};

// Shared with the process that was forked, so that its parent can read it after any end.
struct Counter {
  Calls calls;
  Fault fault;
  long chosen;     // the call that the fault is for, from 1
  long count;      // calls so far
  char call[160];  // the chosen one
};

// From here on until the process ends calls are counted and have faults. The time stands still, so that two
// runs can be compared.
void Arm(Counter& counter);
// From here on nothing is synced any more, though every sync succeeds.
void IgnoreSyncs();

}  // namespace selvane::faults
