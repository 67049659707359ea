#ifndef BLOCKS_H
#define BLOCKS_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "dbents.h"
#include "records.h"

namespace dxf {

/// Collects the entities of model space and of blocks. Blocks may be used before they are defined, so inserts
/// are kept as they are until everything has been read.
class Blocks {
public:
  /// skipped  gets what is left out, and how often; must outlive this
  explicit Blocks(std::map<std::string, int>& skipped) : mSkipped(skipped) {}

  /// Takes a record of the sections BLOCKS and ENTITIES. Throws BadFile for an invalid number.
  void add(const Record& record);
  /// Ends a block that the section left open.
  void endSection() { mBlockP = nullptr; }
  /// To be called once, at the end: the entities of model space in the file's order. Throws BadFile if they
  /// are too many.
  std::vector<std::unique_ptr<AcDbEntity>> takeEntities();

private:
  struct Insert {
    std::string block;
    AcGeMatrix3d place; // turn and place; scale applies before it
    AcGeMatrix3d scale;
    double maxScale = 1; // without sign
    int columns = 1, rows = 1;
    double columnStep = 0, rowStep = 0;
  };
  /// One of the two.
  struct Item {
    std::unique_ptr<AcDbEntity> entityP;
    std::unique_ptr<Insert> insertP;
  };
  struct Block {
    AcGePoint3d base;
    std::vector<Item> items; // until it is built
    bool isBeingBuilt = false;
    std::shared_ptr<const AcDbBlock> builtP; // null until it has been needed
    double size = 0;                         // entities with those of all blocks in it
    int height = 0;                          // levels of blocks in it
  };

  static std::unique_ptr<Insert> readInsert(const Record& record);
  void skip(const std::string& kind) { ++mSkipped[kind]; }
  /// Null for an unknown block, one inside itself, or one too deep. depth  number of blocks around it
  Block* built(const std::string& name, int depth);
  /// Makes the entity of an insert; null if it is left out. Adds to the size and sets the height of the block
  /// around it.
  std::unique_ptr<AcDbEntity> build(Item& item, int depth, double& size, int& height);

  std::map<std::string, int>& mSkipped;
  std::vector<Item> mModelSpace;
  std::map<std::string, Block> mBlocks;
  Block* mBlockP = nullptr; // the one that is being read
};

} // namespace dxf

#endif
