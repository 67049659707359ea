#ifndef DBENTITY_H
#define DBENTITY_H

#include <vector>

#include "dbobject.h"
#include "gemat.h"

/// A box along the world's axes. Empty when constructed.
class AcDbExtents {
public:
  AcDbExtents();

  AcGePoint3d minPoint() const { return mMin; }
  AcGePoint3d maxPoint() const { return mMax; }
  bool isEmpty() const { return mMin.x > mMax.x; }
  void addPoint(const AcGePoint3d& p);

private:
  AcGePoint3d mMin;
  AcGePoint3d mMax;
};

/// A line through points, as the screen shows it.
typedef std::vector<AcGePoint3d> AcDbStroke;

/// Something with a shape. Without operations of its own a class has none, and can't be moved.
class AcDbEntity : public AcDbObject {
public:
  static AcRxClass* desc();
  AcRxClass* isA() const override;

  /// Returns the exact extents of the shape. On a failure the argument is unchanged.
  virtual Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const;
  /// Moves the entity, which must be open for write if it lives in a drawing.
  virtual Acad::ErrorStatus transformBy(const AcGeMatrix3d& transform);

  /// Adds the extents of the shape as the transform would leave it.
  virtual void subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const;
  virtual Acad::ErrorStatus subTransformBy(const AcGeMatrix3d& transform);
  /// Adds the shape's lines, as the transform would leave them.
  virtual void subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const;
};

#endif
