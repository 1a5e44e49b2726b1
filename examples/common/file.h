// Whole files as bytes.
#ifndef ZVP_EXAMPLES_COMMON_FILE_H
#define ZVP_EXAMPLES_COMMON_FILE_H

#include <cstdint>
#include <string>
#include <vector>

namespace examples {

using Bytes = std::vector<uint8_t>;

// Both throw Error, with the system's reason, where the file cannot be read or written.
Bytes readFile(const std::string& path);
void writeFile(const std::string& path, const Bytes& bytes);

}  // namespace examples

#endif
