// Work in a process of its own, so that the peak memory it adds to that of its input is its own.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

// Result: a plain struct with a member `megabytes`. A child that dies ends the benchmark. Work on something small that
// goes before, if any, is not counted: it takes in the pages of the code and what a library sets up once.
template <class Result>
Result apart(const std::function<void(Result&)>& work, const std::function<void()>& warmUp = {}) {
  int ends[2];
  if (pipe(ends) != 0) std::abort();
  const pid_t child = fork();
  if (child == 0) {
    if (warmUp) warmUp();
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    Result result;
    work(result);
    getrusage(RUSAGE_SELF, &after);
    result.megabytes = static_cast<double>(after.ru_maxrss - before.ru_maxrss) / 1024.0;
    if (write(ends[1], &result, sizeof result) != sizeof result) std::abort();
    _exit(0);
  }
  close(ends[1]);
  Result result;
  if (read(ends[0], &result, sizeof result) != sizeof result) std::abort();
  waitpid(child, nullptr, 0);
  close(ends[0]);
  return result;
}
