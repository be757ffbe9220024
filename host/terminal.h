// What is said to people: answers on standard output, complaints on standard error.
#ifndef ROXE_HOST_TERMINAL_H_
#define ROXE_HOST_TERMINAL_H_

#include <string>
#include <string_view>

namespace host {

// The text with a question mark for everything that could drive a terminal or deceive a reader:
// control characters (C0 but the tab, DEL and C1), line ends, marks that turn the direction of writing, and
// bytes that are no UTF-8. The names of files may hold any of these.
std::string printable(std::string_view text);

// Prints whole lines, made printable, on standard output.
void say(std::string_view lines);

// Throws Failure if something that was said did not arrive.
void expect_said();

// Prints "roxe: sentence" on standard error. May be called by several threads.
void complain(std::string_view sentence);

}  // namespace host

#endif  // ROXE_HOST_TERMINAL_H_
