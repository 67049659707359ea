#include "dxf_reader.h"

#include <sstream>

#include <dl_dxf.h>

#include "builder.h"
#include "host.h"
#include "pairs.h"

namespace dxf {

std::string Result::summary() const {
  std::string text = std::to_string(entities) + (entities == 1 ? " entity" : " entities");
  const char* separator = "; left out: ";
  for (const auto& [kind, count] : skipped) {
    text += separator + std::to_string(count) + " " + kind;
    separator = ", ";
  }
  return text;
}

Result load(const std::string& path) {
  Result result;
  try {
    std::istringstream checked(checkedEntities(readTextFile(path), result.skipped));
    Builder builder(result.skipped);
    DL_Dxf reader;
    reader.in(checked, &builder);
    std::vector<std::unique_ptr<AcDbEntity>> entities = builder.takeEntities();
    result.entities = static_cast<int>(entities.size());
    if (entities.empty())
      throw BadFile("nothing to show: " + result.summary());
    for (auto& entityP : entities)
      host::add(std::move(entityP));
  } catch (const BadFile& failure) {
    const std::string reason = failure.what();
    const bool hasLine = !reason.empty() && reason[0] >= '0' && reason[0] <= '9';
    result.error = path + (hasLine ? ":" : ": ") + reason;
    result.entities = 0;
  } catch (const std::exception& failure) {
    result.error = path + ": " + failure.what();
    result.entities = 0;
  }
  return result;
}

} // namespace dxf
