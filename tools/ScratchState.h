// A throwaway local state for a dry run on a root that has none: the ignore rules and an
// empty cache without writing anything into the tree. Removed with its contents at the end.
#pragma once

#include <string>

class ScratchState {
 public:
  ScratchState();
  ~ScratchState();
  ScratchState(const ScratchState&) = delete;
  ScratchState& operator=(const ScratchState&) = delete;
  // A new empty folder in the temporary folder; throws CliError when none can be made.
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};
