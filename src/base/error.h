// Errors that the core throws. Every message is meant for the person at the screen: what happened, to which
// file, and what to do about it. The core lets them through, but for the few that it completes or passes
// over; windows and the command line show them.
#pragma once

#include <stdexcept>
#include <string>

namespace selvane {

// Base of all errors with a message for the user.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file that cannot be opened, read, written or renamed.
class FileError : public Error {
 public:
  using Error::Error;
};

// Input that cannot be understood, or a value outside what a format can hold.
class InputError : public Error {
 public:
  using Error::Error;
};

// A file of a kind on which the program ends itself with status -1. `what()` is the text of the message box
// and `title()` its caption.
class EndOfProgram : public Error {
 public:
  EndOfProgram(std::string title, const std::string& text) : Error(text), title_(std::move(title)) {}
  const std::string& title() const { return title_; }

 private:
  std::string title_;
};

// Unwinds to the caller's handler, which shows nothing.
class SilentAbort : public std::exception {
 public:
  const char* what() const noexcept override { return "silent abort"; }
};

// The user asked to stop (Ctrl-C, or a window's own way). Thrown by Progress::Pulse.
class Interrupted : public std::exception {
 public:
  const char* what() const noexcept override { return "interrupted"; }
};

}  // namespace selvane
