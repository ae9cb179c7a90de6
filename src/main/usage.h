#ifndef KESTREL_MAIN_USAGE_H
#define KESTREL_MAIN_USAGE_H

namespace kestrel {

// Prints the usage text on standard output.
void PrintUsage(const char *program);

}  // namespace kestrel

#endif  // KESTREL_MAIN_USAGE_H
