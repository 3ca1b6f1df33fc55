#pragma once

namespace QelLumo {

// What one processing run of a backlog did.
struct DvBacklogProgress {
  bool yielded = false;         // the run stopped early; the bookmark holds the next key
  unsigned pending = 0;         // size of the backlog after the run
  unsigned processed = 0;       // keys worked in this run
  unsigned addedMeanwhile = 0;  // keys added to the backlog during the run
  unsigned remaining = 0;       // keys the run took but did not finish, given back
  unsigned passes = 0;          // sweeps that reached the end of the keys
};

}  // namespace QelLumo
