// Text about guests for the terminal.
#ifndef GUESTS_TEXT_H
#define GUESTS_TEXT_H

#include <chrono>
#include <span>
#include <string>

#include "tools/guests/guest.h"

namespace guests {

// A table with a line for each guest. `now` is the time at which the monitors were asked.
std::string Table(std::span<const Guest> guests, std::chrono::system_clock::time_point now);

// Tells the user for each guest why figures are missing, and how to get them.
std::string Advice(std::span<const Guest> guests, std::chrono::system_clock::time_point now);

}  // namespace guests

#endif  // GUESTS_TEXT_H
