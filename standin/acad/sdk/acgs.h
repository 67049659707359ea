#ifndef ACGS_H
#define ACGS_H

#include "adesk.h"
#include "gemat.h"

/// A constant that is compared by its address.
class AcUniqueString {};

/// The requirements of a caller on the graphics system.
class AcGsKernelDescriptor {
public:
  static const AcUniqueString* k3DDrawing;

  void addRequirement(const AcUniqueString* requirement) { mIs3d = mIs3d || requirement == k3DDrawing; }
  /// Returns true if k3DDrawing is required, the only requirement that this host knows.
  bool is3d() const { return mIs3d; }

private:
  bool mIs3d = false;
};

/// The camera of a viewport, in memory. acgsSetViewParameters writes it into the drawing.
class AcGsView {
public:
  enum Projection { kParallel = 0, kPerspective = 1 };

  virtual ~AcGsView() = default;
  virtual AcGePoint3d position() const = 0;
  virtual AcGePoint3d target() const = 0;
  virtual AcGeVector3d upVector() const = 0;
  /// Size of the visible field at the target, drawing units.
  virtual double fieldWidth() const = 0;
  virtual double fieldHeight() const = 0;
  virtual bool isPerspective() const = 0;
  virtual void setView(const AcGePoint3d& position, const AcGePoint3d& target, const AcGeVector3d& upVector,
                       double fieldWidth, double fieldHeight, Projection projection = kParallel) = 0;
  /// Divides both sizes of the field by the factor, in either projection: above 1 the picture grows. A factor
  /// that is not above 0, or that would make the field infinite, changes nothing.
  virtual void zoom(double factor) = 0;
  /// Shows the view as it is now.
  virtual void update() = 0;
  virtual bool isValid() const = 0;
};

/// Returns the graphics view of a viewport, owned by the host. Returns null if there is no such viewport or
/// the descriptor doesn't require k3DDrawing.
AcGsView* acgsObtainAcGsView(int viewport, const AcGsKernelDescriptor& descriptor);

/// Writes the view into the drawing. Returns false if there is no such viewport or view.
bool acgsSetViewParameters(int viewport, const AcGsView* view, bool regenRequired, bool rescaleRequired,
                           bool syncRequired);

#endif
