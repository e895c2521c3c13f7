// The terminal a console program talks to, and the user's wish to stop it.
#pragma once

#include <string>

namespace quillmoor {

/// Is standard output a terminal that understands colours (not a file, not a pipe, not a "dumb" one)? On
/// Windows this also switches the console to ANSI sequences and UTF-8.
bool prepareTerminal();

/// Does somebody sit at standard input?
bool inputIsTerminal();

/// The window goes away with this program: one that the system has opened for it alone, by a double click.
bool terminalClosesAtEnd();

/// Columns of the terminal at standard output now; 80 when it cannot be told.
int terminalWidth();

/// From now on Ctrl-C (and the system's request to terminate) is counted instead of ending the program; the
/// second one ends it at once with status 130. A reader that goes away (a closed pipe) no longer ends it.
void catchStopSignals();

/// How many requests to stop have come.
int stopSignals();

/// One line of standard input without its end. Raises as `ReadSecretLine` does.
std::string ReadLine();

/// One line of standard input without its end, not shown while it is typed. Raises std::runtime_error when
/// there is none or it is longer than 1,000 bytes.
std::string ReadSecretLine();

}  // namespace quillmoor
