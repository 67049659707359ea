#include "blocks.h"

#include <algorithm>
#include <cmath>

#include "entities.h"

namespace dxf {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180;
constexpr int kMaxDepth = 16;       // blocks in blocks
constexpr double kMaxScale = 1e6;   // its power of kMaxDepth still yields finite coordinates
constexpr double kMaxSize = 5e6;    // entities of one insert, nested ones included
constexpr double kMaxTotal = 2e7;   // entities of all of model space
constexpr double kMaxCells = 10000; // places of an insert in rows and columns

} // namespace

void Blocks::add(const Record& record) {
  constexpr int kIsOnLayout = 67;
  const Maker make = makerOf(record.kind);
  Item item;
  if (record.kind == "BLOCK") {
    mBlockP = &mBlocks[std::string(record.text(2))];
    mBlockP->base = record.point(10);
  } else if (record.kind == "ENDBLK") {
    mBlockP = nullptr;
  } else if (record.kind == "SEQEND") {
    // Ends the vertices of a polyline or the attributes of an insert.
  } else if (!make && record.kind != "INSERT") {
    skip(printable(record.kind));
  } else if (record.integer(kIsOnLayout) == 1) {
    skip("entity on a layout");
  } else {
    if (make)
      item.entityP = make(record);
    else
      item.insertP = readInsert(record);
    if (item.entityP || item.insertP)
      (mBlockP ? mBlockP->items : mModelSpace).push_back(std::move(item));
    else
      skip(std::string(record.kind) + " without a shape");
  }
}

std::unique_ptr<Blocks::Insert> Blocks::readInsert(const Record& record) {
  auto insertP = std::make_unique<Insert>();
  insertP->block = record.text(2);
  const double scale[] = {record.number(41, 1), record.number(42, 1), record.number(43, 1)};
  for (const double factor : scale)
    insertP->maxScale = std::max(insertP->maxScale, std::fabs(factor));
  insertP->scale =
      AcGeMatrix3d::alignCoordSys(AcGePoint3d::kOrigin, {scale[0], 0, 0}, {0, scale[1], 0}, {0, 0, scale[2]});
  insertP->place = AcGeMatrix3d::planeToWorld(record.normal()) *
                   AcGeMatrix3d::translation(record.point(10).asVector()) *
                   AcGeMatrix3d::rotation(record.number(50) * kDegree, AcGeVector3d::kZAxis);
  insertP->columns = std::max(1, record.integer(70));
  insertP->rows = std::max(1, record.integer(71));
  insertP->columnStep = record.number(44);
  insertP->rowStep = record.number(45);
  return insertP;
}

Blocks::Block* Blocks::built(const std::string& name, int depth) {
  const auto found = mBlocks.find(name);
  if (found == mBlocks.end())
    return nullptr;
  Block& block = found->second;
  if (block.isBeingBuilt || depth + block.height > kMaxDepth)
    return nullptr;
  if (block.builtP)
    return &block;
  block.isBeingBuilt = true;
  auto builtP = std::make_shared<AcDbBlock>();
  builtP->base = block.base;
  for (Item& item : block.items)
    if (auto entityP = build(item, depth + 1, block.size, block.height))
      builtP->entities.push_back(std::move(entityP));
  block.items.clear();
  block.isBeingBuilt = false;
  block.builtP = std::move(builtP);
  return &block;
}

std::unique_ptr<AcDbEntity> Blocks::build(Item& item, int depth, double& size, int& height) {
  if (item.entityP) {
    ++size;
    return std::move(item.entityP);
  }
  const Insert& insert = *item.insertP;
  const Block* const blockP = built(insert.block, depth);
  if (!blockP) {
    skip("INSERT of an unknown, circular or too deep block");
    return nullptr;
  }
  const double cells = static_cast<double>(insert.columns) * insert.rows;
  const double ownSize = cells * std::max(1.0, blockP->size);
  if (cells > kMaxCells || ownSize > kMaxSize || insert.maxScale > kMaxScale) {
    skip("INSERT that stands for too much");
    return nullptr;
  }
  size += ownSize;
  height = std::max(height, blockP->height + 1);
  if (cells == 1)
    return std::make_unique<AcDbBlockReference>(blockP->builtP, insert.place * insert.scale);
  auto arrayP = std::make_shared<AcDbBlock>();
  for (int row = 0; row < insert.rows; ++row)
    for (int column = 0; column < insert.columns; ++column)
      arrayP->entities.push_back(std::make_unique<AcDbBlockReference>(
          blockP->builtP,
          AcGeMatrix3d::translation({column * insert.columnStep, row * insert.rowStep, 0}) * insert.scale));
  return std::make_unique<AcDbBlockReference>(arrayP, insert.place);
}

std::vector<std::unique_ptr<AcDbEntity>> Blocks::takeEntities() {
  std::vector<std::unique_ptr<AcDbEntity>> entities;
  double total = 0;
  int height = 0;
  for (Item& item : mModelSpace) {
    std::unique_ptr<AcDbEntity> entityP = build(item, 0, total, height);
    if (!entityP)
      continue;
    if (total > kMaxTotal)
      throw BadFile("its inserts stand for too many entities");
    AcDbExtents box;
    entityP->subAddExtents({}, box);
    if (box.isEmpty())
      skip("INSERT of an empty block");
    else
      entities.push_back(std::move(entityP));
  }
  return entities;
}

} // namespace dxf
