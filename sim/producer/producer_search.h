// Where producer files are found: the directories listed in
// GENICAM_GENTL64_PATH (separated by ':'), files ending in ".cti", sorted by
// name within each directory, directories in the order listed, each path once.
#pragma once

#include <string>
#include <vector>

namespace oxelsim {

std::vector<std::string> SearchProducerFiles();

}  // namespace oxelsim
