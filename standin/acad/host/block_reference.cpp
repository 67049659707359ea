#include "state.h"

AcGeMatrix3d AcDbBlockReference::fromBlock(const AcGeMatrix3d& transform) const {
  return transform * mTransform * AcGeMatrix3d::translation(AcGePoint3d::kOrigin - mBlockP->base);
}

void AcDbBlockReference::subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const {
  // From the entities themselves: the box around a turned box would be too big.
  const AcGeMatrix3d m = fromBlock(transform);
  for (const auto& entityP : mBlockP->entities)
    entityP->subAddExtents(m, extents);
}

Acad::ErrorStatus AcDbBlockReference::subTransformBy(const AcGeMatrix3d& transform) {
  mTransform = transform * mTransform;
  return Acad::eOk;
}

void AcDbBlockReference::subAddStrokes(const AcGeMatrix3d& transform,
                                       std::vector<AcDbStroke>& strokes) const {
  const AcGeMatrix3d m = fromBlock(transform);
  for (const auto& entityP : mBlockP->entities)
    entityP->subAddStrokes(m, strokes);
}
