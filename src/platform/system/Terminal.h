// The terminal of a console program, and requests to stop it.
#pragma once

#include <string>

namespace quillmoor {

/// Whether standard output is a terminal with colours (not a file, a pipe, or a "dumb" terminal). On Windows
/// also switches the console to ANSI sequences and UTF-8.
bool prepareTerminal();

/// Whether standard input is a terminal.
bool inputIsTerminal();

/// Whether the window closes with this program, as the system has opened it for it alone (a double click).
bool terminalClosesAtEnd();

/// Current width in columns of the terminal at standard output; 80 when it is unknown.
int terminalWidth();

/// Makes Ctrl-C (and the system's request to terminate) count instead of ending the program; the second one
/// ends it at once with status 130. A closed pipe no longer ends it.
void catchStopSignals();

/// The number of requests to stop so far.
int stopSignals();

/// One line of standard input without its line end. Raises as `ReadSecretLine` does.
std::string ReadLine();

/// One line of standard input without its line end, not echoed. Raises std::runtime_error when there is none
/// or it is longer than 1,000 bytes.
std::string ReadSecretLine();

}  // namespace quillmoor
