// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// usage: spawn_minimum FILE
//
// Starts every line of FILE with a shell of its own, all at once, with their output thrown away,
// and waits for their ends: what the commands themselves cost, whoever runs them.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) {
    return EXIT_FAILURE;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  std::ifstream lines(argv[1]);
  std::string shell = "/bin/sh";
  std::string option = "-c";
  for (std::string line; std::getline(lines, line);) {
    char* const arguments[] = {shell.data(), option.data(), line.data(), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, shell.c_str(), &actions, nullptr, arguments, environ) != 0) {
      return EXIT_FAILURE;
    }
  }
  while (wait(nullptr) > 0) {
  }
  return EXIT_SUCCESS;
}
