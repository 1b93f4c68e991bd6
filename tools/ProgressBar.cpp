#include "ProgressBar.h"

#include <cstdio>

#include "LockWatch.h"

ProgressBar::ProgressBar(const std::string& label, size_t total, bool quiet)
    : label_(label), total_(total), quiet_(quiet) {
  draw();
}

ProgressBar::~ProgressBar() { finish(); }

void ProgressBar::advance(size_t steps) {
  done_ += steps;
  LockWatch::touch();
  draw();
}

void ProgressBar::finish() {
  if (finished_) return;
  finished_ = true;
  if (quiet_) return;
  done_ = total_;
  lastPercent_ = -1;
  draw();
  std::fputc('\n', stderr);
}

void ProgressBar::draw() {
  if (quiet_) return;
  const int percent = total_ ? static_cast<int>(done_ * 100 / total_) : 100;
  if (percent == lastPercent_) return;
  lastPercent_ = percent;
  const int width = 30;
  const int filled = percent * width / 100;
  std::fprintf(stderr, "\r%-12s [%.*s%*s] %3d%% (%zu/%zu)", label_.c_str(), filled,
               "##############################", width - filled, "", percent, done_, total_);
  std::fflush(stderr);
}
