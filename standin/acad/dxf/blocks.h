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
/// are stored until everything has been read.
class Blocks {
public:
  /// skipped  counts what is left out, by kind; must outlive this object
  explicit Blocks(std::map<std::string, int>& skipped) : mSkipped(skipped) {}

  /// Takes a record of the sections BLOCKS and ENTITIES. Throws BadFile for an invalid number.
  void add(const Record& record);
  /// Ends a block that lacks its ENDBLK.
  void endSection() { mBlockP = nullptr; }
  /// Returns the entities of model space in the file's order. Call once, at the end. Throws BadFile if they
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
  /// An entity, or an insert: one of the two is null.
  struct Item {
    std::unique_ptr<AcDbEntity> entityP;
    std::unique_ptr<Insert> insertP;
  };
  struct Block {
    AcGePoint3d base;
    std::vector<Item> items; // until it is built
    bool isBeingBuilt = false;
    std::shared_ptr<const AcDbBlock> builtP; // null until it has been needed
    double size = 0;                         // entities, with those of nested blocks
    int height = 0;                          // levels of nested blocks
  };

  static std::unique_ptr<Insert> readInsert(const Record& record);
  void skip(const std::string& kind) { ++mSkipped[kind]; }
  /// Returns a block, built. Null for an unknown block, one inside itself, or one too deep.
  /// depth  number of blocks around it
  Block* built(const std::string& name, int depth);
  /// Returns the item's entity, null if it is left out. Adds to the size and raises the height of the block
  /// around it.
  std::unique_ptr<AcDbEntity> build(Item& item, int depth, double& size, int& height);

  std::map<std::string, int>& mSkipped;
  std::vector<Item> mModelSpace;
  std::map<std::string, Block> mBlocks;
  Block* mBlockP = nullptr; // the block that is being read
};

} // namespace dxf

#endif
