// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/TempFolder.h"

namespace lumo::test {

using Words = std::vector<std::string>;

/// A started lumo-cli, its output going to files.
class Program {
 public:
  /// `dataMib`, where it is not 0, limits the memory that it may ask the system for.
  Program(const TempFolder& folder, const Words& words, const char* program = LUMO_CLI, unsigned dataMib = 0)
      : out_(folder.file("stdout.txt")), err_(folder.file("stderr.txt")) {
    pid_ = ::fork();
    if (pid_ != 0) return;
    const int out = ::open(out_.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
    const int err = ::open(err_.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    std::vector<char*> arguments{const_cast<char*>(program)};
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const rlimit limit{rlim_t{dataMib} << 20, rlim_t{dataMib} << 20};
    if (dataMib != 0) ::setrlimit(RLIMIT_DATA, &limit);
    ::execv(program, arguments.data());
    ::_exit(127);
  }
  void interrupt() const { ::kill(pid_, SIGINT); }
  [[nodiscard]] bool running() const {
    return ::kill(pid_, 0) == 0 && ::waitpid(pid_, nullptr, WNOHANG) == 0;
  }
  /// Exit status, -1 when a signal ended it. `peak` gets the largest resident size in bytes.
  int wait(std::uint64_t* peak = nullptr) const {
    int status = 0;
    rusage usage{};
    ::wait4(pid_, &status, 0, &usage);
    if (peak != nullptr) *peak = static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  [[nodiscard]] std::string out() const { return readFile(out_); }
  [[nodiscard]] std::string err() const { return readFile(err_); }

 private:
  std::string out_, err_;
  pid_t pid_ = 0;
};

}  // namespace lumo::test
