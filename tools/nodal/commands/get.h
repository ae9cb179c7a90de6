// nodal get: one record or list.
#ifndef NODAL_COMMANDS_GET_H
#define NODAL_COMMANDS_GET_H

#include <string>

namespace nodal {

struct GetOptions {
  std::string path;
  bool descriptions = false;
  bool json = false;
  bool raw = false;
};

// Prints the node of that path. Throws a Failure.
void Get(const GetOptions &options);

}  // namespace nodal

#endif  // NODAL_COMMANDS_GET_H
