#include "dxf_reader.h"

#include "blocks.h"
#include "host.h"

namespace dxf {

namespace {

/// Reads a file: sections from "0 SECTION" to "0 ENDSEC", then "0 EOF".
void readSections(const std::string& text, Blocks& blocks) {
  Records records(text);
  Record record;
  std::string_view section; // empty: between sections
  bool hasSection = false;
  while (records.read(record)) {
    if (record.kind == "EOF") {
      if (!section.empty())
        throw BadFile(record.line, "EOF inside the section \"" + printable(section) + "\"");
      if (!hasSection)
        break;
      return;
    } else if (record.kind == "ENDSEC") { // some writers end a section twice
      section = {};
      blocks.endSection();
    } else if (section.empty()) {
      if (record.kind != "SECTION")
        throw BadFile(record.line, "a section should begin here, not \"" + printable(record.kind) + "\"");
      section = record.text(2);
      if (section.empty())
        throw BadFile(record.line, "a section without a name");
      hasSection = true;
    } else if (section == "ENTITIES" || section == "BLOCKS") {
      blocks.add(record);
    }
  }
  throw BadFile(records.line(), hasSection ? "the file ends without EOF, it is not whole"
                                           : "no section, this is no DXF file");
}

} // namespace

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
    const std::string text = readTextFile(path);
    Blocks blocks(result.skipped);
    readSections(text, blocks);
    std::vector<std::unique_ptr<AcDbEntity>> entities = blocks.takeEntities();
    result.entities = static_cast<int>(entities.size());
    for (auto& entityP : entities)
      host::add(std::move(entityP));
  } catch (const BadFile& failure) {
    result.error = path + failure.what();
  } catch (const std::exception& failure) {
    result.error = path + ": " + failure.what();
  }
  return result;
}

} // namespace dxf
