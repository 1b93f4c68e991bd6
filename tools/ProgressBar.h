// A one-line progress bar on standard error; silent when quiet.
#pragma once

#include <cstddef>
#include <string>

class ProgressBar {
 public:
  ProgressBar(const std::string& label, size_t total, bool quiet);
  ~ProgressBar();
  void advance(size_t steps = 1);
  void finish();

 private:
  void draw();
  std::string label_;
  size_t total_;
  size_t done_ = 0;
  bool quiet_;
  bool finished_ = false;
  int lastPercent_ = -1;
};
