#include "program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>

#include <csignal>
#include <sstream>
#include <stdexcept>

/// The command that runs programs of another processor, its words separated by bars.
#ifndef TEST_EMULATOR
#define TEST_EMULATOR ""
#endif

namespace simulator {

namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
  }
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

int leftMs(Clock::time_point end) {
  const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

/// Returns all that has been written, without waiting for more.
std::string readAll(const FileDescriptor& from) {
  std::string all;
  char some[4096];
  pollfd ready{from.get(), POLLIN, 0};
  while (poll(&ready, 1, 0) > 0) {
    const ssize_t size = read(from.get(), some, sizeof some);
    if (size <= 0) break;
    all.append(some, static_cast<size_t>(size));
  }
  return all;
}

std::vector<std::string> commandLine(const std::string& file,
                                     const std::vector<std::string>& arguments) {
  std::vector<std::string> words;
  std::istringstream emulator(TEST_EMULATOR);
  for (std::string word; std::getline(emulator, word, '|');)
    words.push_back(word);
  words.push_back(file);
  words.insert(words.end(), arguments.begin(), arguments.end());
  return words;
}

}  // namespace

Program::Program(const std::string& file, const std::vector<std::string>& arguments) {
  // A test that types to a program that has ended fails with what the program said.
  std::signal(SIGPIPE, SIG_IGN);
  Pipe in;
  Pipe out;
  Pipe error;
  const std::vector<std::string> words = commandLine(file, arguments);
  std::vector<char*> argv;
  for (const std::string& word : words)
    argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) {
    std::signal(SIGPIPE, SIG_DFL);
    dup2(in.readEnd.get(), STDIN_FILENO);
    dup2(out.writeEnd.get(), STDOUT_FILENO);
    dup2(error.writeEnd.get(), STDERR_FILENO);
    execvp(argv.front(), argv.data());
    _exit(127);
  }
  input = std::move(in.writeEnd);
  output = std::move(out.readEnd);
  errorOutput = std::move(error.readEnd);
}

Program::~Program() {
  if (child <= 0) return;
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

std::optional<std::string> Program::readLine(Time limit) {
  const auto end = Clock::now() + limit;
  size_t lineEnd;
  while ((lineEnd = pending.find('\n')) == std::string::npos) {
    pollfd wait{output.get(), POLLIN, 0};
    if (poll(&wait, 1, leftMs(end)) <= 0) return std::nullopt;
    char some[4096];
    const ssize_t size = read(output.get(), some, sizeof some);
    if (size <= 0) return std::nullopt;
    pending.append(some, static_cast<size_t>(size));
  }
  const std::string line = pending.substr(0, lineEnd);
  pending.erase(0, lineEnd + 1);
  return line;
}

bool Program::readUntil(const std::string& text, Time limit) {
  const auto end = Clock::now() + limit;
  while (true) {
    const std::optional<std::string> line = readLine(milliseconds(leftMs(end)));
    if (!line) return false;
    if (line->find(text) != std::string::npos) return true;
  }
}

void Program::type(const std::string& line) {
  const std::string typed = line + "\n";
  if (write(input.get(), typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) {
    throw std::runtime_error("the program does not read; it said: " + errors());
  }
}

void Program::signal(int number) {
  if (child > 0) kill(child, number);
}

/// Waits for the end of the output; after it the wait for the process is short.
std::optional<int> Program::waitForEnd(Time limit) {
  const auto end = Clock::now() + limit;
  while (readLine(milliseconds(leftMs(end)))) {
  }
  if (leftMs(end) == 0) return std::nullopt;
  int status = 0;
  if (waitpid(child, &status, 0) != child) return std::nullopt;
  child = -1;
  return WIFEXITED(status) ? std::optional<int>(WEXITSTATUS(status)) : std::nullopt;
}

std::string Program::restOfOutput() { return pending + readAll(output); }

std::string Program::errors() { return readAll(errorOutput); }

}  // namespace simulator
