#ifndef PAIRS_H
#define PAIRS_H

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace dxf {

/// Why a file can't be read. The text names the line, if the trouble lies in one.
class BadFile : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
  BadFile(size_t line, const std::string& reason) : runtime_error(std::to_string(line) + ": " + reason) {}
};

/// Goes through the text of a DXF file before dxflib sees it, since dxflib takes anything. Checks that it is
/// made of pairs of a code and a value from the first section to EOF, and that coordinates are numbers. Gives
/// the part that is worth reading in the same format: blocks and entities of the known kinds, with the counts
/// that dxflib sizes its arrays by replaced by true ones. skipped  gets the entities of other kinds
std::string checkedEntities(const std::string& text, std::map<std::string, int>& skipped);

/// The whole of a text file. Throws BadFile if it can't be read, is empty or is none.
std::string readTextFile(const std::string& path);

} // namespace dxf

#endif
