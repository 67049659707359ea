#ifndef DBENTS_H
#define DBENTS_H

#include <memory>
#include <vector>

#include "dbentity.h"

/// The entities of a drawing. Angles are in radians, lengths in drawing units, all points and directions in
/// world coordinates. An entity belongs to whoever constructed it until it is added to a drawing.

/// A shape that is defined by points: a line through them, closed or open, unless the class draws it
/// otherwise.
class AcDbPointShape : public AcDbEntity {
public:
  void subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const override;
  Acad::ErrorStatus subTransformBy(const AcGeMatrix3d& transform) override;
  void subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const override;

protected:
  AcDbPointShape(std::vector<AcGePoint3d> points, bool isClosed)
      : mPoints(std::move(points)), mIsClosed(isClosed) {}

  std::vector<AcGePoint3d> mPoints;
  const bool mIsClosed;
};

class AcDbPoint : public AcDbPointShape {
public:
  explicit AcDbPoint(const AcGePoint3d& position) : AcDbPointShape({position}, false) {}
};

class AcDbLine : public AcDbPointShape {
public:
  AcDbLine(const AcGePoint3d& start, const AcGePoint3d& end) : AcDbPointShape({start, end}, false) {}
  static AcRxClass* desc();
  AcRxClass* isA() const override;
  /// On a failure the argument stays as it is.
  Acad::ErrorStatus getStartPoint(AcGePoint3d& point) const;
  Acad::ErrorStatus getEndPoint(AcGePoint3d& point) const;
};

class AcDb3dPolyline : public AcDbPointShape {
public:
  AcDb3dPolyline(std::vector<AcGePoint3d> points, bool isClosed)
      : AcDbPointShape(std::move(points), isClosed) {}
};

class AcDbFace : public AcDbPointShape {
public:
  /// A triangle if the last two corners are equal.
  AcDbFace(const AcGePoint3d& a, const AcGePoint3d& b, const AcGePoint3d& c, const AcGePoint3d& d);
  static AcRxClass* desc();
  AcRxClass* isA() const override;
};

/// A part of an ellipse: centre + major * cos t + minor * sin t, for t from start to start + sweep. Circles,
/// arcs and ellipses are built on it, since any affine transform of such a curve is one, too.
struct AcDbEllipticArc {
  AcGePoint3d centre;
  AcGeVector3d major;
  AcGeVector3d minor;
  double start = 0;
  double sweep = 0; // 2 pi for the whole curve

  AcGePoint3d at(double t) const;
  AcDbEllipticArc transformedBy(const AcGeMatrix3d& transform) const;
  void addExtents(AcDbExtents& extents) const;
  AcDbStroke stroke() const;
};

/// Base of circle, arc and ellipse.
class AcDbEllipticCurve : public AcDbEntity {
public:
  AcGePoint3d center() const { return mArc.centre; }
  AcGeVector3d normal() const { return mArc.major.crossProduct(mArc.minor).normalize(); }
  double radius() const { return mArc.major.length(); }

  void subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const override;
  Acad::ErrorStatus subTransformBy(const AcGeMatrix3d& transform) override;
  void subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const override;

protected:
  /// mustStayRound  transformBy refuses a transform that distorts: a circle must stay a circle
  AcDbEllipticCurve(const AcDbEllipticArc& arc, bool mustStayRound)
      : mArc(arc), mMustStayRound(mustStayRound) {}

private:
  AcDbEllipticArc mArc;
  const bool mMustStayRound;
};

class AcDbCircle : public AcDbEllipticCurve {
public:
  AcDbCircle(const AcGePoint3d& centre, const AcGeVector3d& normal, double radius);
};

/// Runs counter-clockwise about its normal. Angles are measured from the direction that an arc with that
/// normal has as its x axis (world X if the normal is world Z).
class AcDbArc : public AcDbEllipticCurve {
public:
  AcDbArc(const AcGePoint3d& centre, const AcGeVector3d& normal, double radius, double startAngle,
          double endAngle);
};

class AcDbEllipse : public AcDbEllipticCurve {
public:
  /// majorAxis from the centre to the far end, ratio of the minor to the major axis. Angles are parameters, 0
  /// at the end of the major axis; 0 to 2 pi is the whole ellipse.
  AcDbEllipse(const AcGePoint3d& centre, const AcGeVector3d& normal, const AcGeVector3d& majorAxis,
              double ratio, double startAngle, double endAngle);
};

/// A flat line of straight and round pieces.
class AcDbPolyline : public AcDbPointShape {
public:
  /// A corner in the line's plane; bulge is the tangent of a quarter of the angle of the arc to the next
  /// corner, positive for counter-clockwise, 0 for a straight piece.
  struct Vertex {
    double x = 0;
    double y = 0;
    double bulge = 0;
  };
  /// elevation  distance of the plane from the origin along the normal
  AcDbPolyline(const std::vector<Vertex>& vertices, bool isClosed, double elevation = 0,
               const AcGeVector3d& normal = AcGeVector3d::kZAxis);

  void subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const override;
  Acad::ErrorStatus subTransformBy(const AcGeMatrix3d& transform) override;
  void subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const override;

private:
  struct RoundPiece {
    size_t from = 0; // corner at which it starts
    AcDbEllipticArc arc;
  };
  std::vector<RoundPiece> mRoundPieces; // in the order of their corners; pieces not named here are straight
};

class AcDbPolyFaceMesh : public AcDbPointShape {
public:
  /// Corners of a face, counted from 0; the fourth is -1 for a triangle.
  struct Face {
    int corner[4] = {-1, -1, -1, -1};
  };
  /// Leaves out faces with a corner that isn't a vertex.
  AcDbPolyFaceMesh(std::vector<AcGePoint3d> vertices, const std::vector<Face>& faces);
  static AcRxClass* desc();
  AcRxClass* isA() const override;

  /// Adds each edge once, also if faces share it.
  void subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const override;

private:
  std::vector<Face> mFaces;
};

/// Entities under one name, inserted any number of times. Shared by its inserts, and constant once one
/// exists.
struct AcDbBlock {
  AcGePoint3d base; // the point that an insert places
  std::vector<std::unique_ptr<AcDbEntity>> entities;
};

class AcDbBlockReference : public AcDbEntity {
public:
  /// transform  from the block's coordinates, in which its base is at the origin, to the world's
  AcDbBlockReference(std::shared_ptr<const AcDbBlock> block, const AcGeMatrix3d& transform)
      : mBlockP(std::move(block)), mTransform(transform) {}
  static AcRxClass* desc();
  AcRxClass* isA() const override;

  void subAddExtents(const AcGeMatrix3d& transform, AcDbExtents& extents) const override;
  Acad::ErrorStatus subTransformBy(const AcGeMatrix3d& transform) override;
  void subAddStrokes(const AcGeMatrix3d& transform, std::vector<AcDbStroke>& strokes) const override;

private:
  /// Returns the way from the block's coordinates to where the transform would leave them.
  AcGeMatrix3d fromBlock(const AcGeMatrix3d& transform) const;

  std::shared_ptr<const AcDbBlock> mBlockP;
  AcGeMatrix3d mTransform;
};

/// A viewport on a layout: a rectangle of paper with a flat view in it.
class AcDbViewport : public AcDbEntity {
public:
  struct Layout {
    double width = 300; // paper units
    double height = 200;
    double viewHeight = 100; // drawing units
    AcGePoint2d centre;
  };
  static AcRxClass* desc();
  AcRxClass* isA() const override;

  /// Size on paper, paper units.
  double width() const;
  double height() const;
  /// Height and centre of the view, drawing units.
  double viewHeight() const;
  AcGePoint2d viewCenter() const;
  /// Return eNotOpenForWrite unless the viewport is open for write, eInvalidInput for NaN, infinity or a
  /// height of 0 or less.
  Acad::ErrorStatus setViewCenter(const AcGePoint2d& centre);
  Acad::ErrorStatus setViewHeight(double height);
  /// Shows the view as it is now.
  Acad::ErrorStatus updateDisplay() const;

  Layout mLayout; // the host reads and sets it without a call
};

#endif
