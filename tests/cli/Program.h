// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/TempFolder.h"

namespace lumo::test {

using Words = std::vector<std::string>;

/// A started lumo-cli, its output going to files.
class Program {
 public:
  Program(const TempFolder& folder, const Words& words, const char* program = LUMO_CLI)
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
    ::execv(program, arguments.data());
    ::_exit(127);
  }
  void interrupt() const { ::kill(pid_, SIGINT); }
  [[nodiscard]] bool running() const {
    return ::kill(pid_, 0) == 0 && ::waitpid(pid_, nullptr, WNOHANG) == 0;
  }
  /// Exit status, -1 when a signal ended it.
  int wait() const {
    int status = 0;
    ::waitpid(pid_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  [[nodiscard]] std::string out() const { return readFile(out_); }
  [[nodiscard]] std::string err() const { return readFile(err_); }

 private:
  std::string out_, err_;
  pid_t pid_ = 0;
};

}  // namespace lumo::test
