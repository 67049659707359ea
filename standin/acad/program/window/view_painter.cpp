#include "view_painter.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

namespace program {

namespace {

constexpr double kNearest = 0.02; // of the distance of eye and target: what is closer to the eye isn't drawn
constexpr double kPickRadius = 6; // pixels
constexpr double kFarAway =
    30000; // pixels; what is farther out isn't drawn, so that GDI's coordinates don't overflow
constexpr COLORREF kPaper = RGB(250, 250, 248);
constexpr COLORREF kInk = RGB(40, 56, 78);
constexpr COLORREF kSelected = RGB(214, 96, 0);

struct Pixel {
  double x = 0;
  double y = 0;
  bool isVisible = false;
};

/// From world to pixels, for the view or the layout that is shown.
class Projection {
public:
  explicit Projection(SIZE size) : mMiddle{size.cx / 2.0, size.cy / 2.0, true}, mIsLayout(host::isLayout()) {
    if (mIsLayout) {
      mScale = size.cy / host::layout().viewHeight;
      return;
    }
    mView = host::view();
    const AcGeVector3d look = mView.position - mView.target;
    mDistance = look.length();
    mZ = AcGeVector3d(look).normalize();
    mX = mView.up.crossProduct(mZ).normalize(); // to the right of the picture
    mY = mZ.crossProduct(mX);
    mScale = std::min(size.cx / mView.fieldWidth, size.cy / mView.fieldHeight);
  }

  Pixel operator()(const AcGePoint3d& point) const {
    if (mIsLayout) {
      const AcGePoint2d centre = host::layout().centre;
      return at((point.x - centre.x) * mScale, (point.y - centre.y) * mScale);
    }
    const AcGeVector3d p = point - mView.target;
    double scale = mScale;
    if (mView.perspective) {
      const double depth = mDistance - p.dotProduct(mZ);
      if (!(depth > kNearest * mDistance))
        return {};
      scale *= mDistance / depth;
    }
    return at(p.dotProduct(mX) * scale, p.dotProduct(mY) * scale);
  }

private:
  Pixel at(double x, double y) const {
    return {mMiddle.x + x, mMiddle.y - y, std::fabs(x) < kFarAway && std::fabs(y) < kFarAway};
  }

  Pixel mMiddle;
  bool mIsLayout;
  host::ViewState mView;
  double mDistance = 0;
  double mScale = 1;
  AcGeVector3d mX, mY, mZ;
};

double distance(const Pixel& a, const Pixel& b, POINT p) {
  const double dx = b.x - a.x, dy = b.y - a.y;
  const double square = dx * dx + dy * dy;
  const double t = square > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0;
  return std::hypot(a.x + t * dx - p.x, a.y + t * dy - p.y);
}

template <class Visit> void forEachSegment(SIZE size, Visit visit) {
  const Projection project(size);
  for (int number = 1; number <= host::entityCount(); ++number) {
    for (const AcDbStroke& stroke : host::strokes(number)) {
      for (std::size_t i = 1; i < stroke.size(); ++i) {
        const Pixel a = project(stroke[i - 1]);
        const Pixel b = project(stroke[i]);
        if (a.isVisible && b.isVisible)
          visit(number, a, b);
      }
    }
  }
}

/// Draws all of them in one call: one for each segment takes several times as long.
void drawSegments(HDC dc, const std::vector<POINT>& ends, int width, COLORREF colour) {
  const HPEN pen = CreatePen(PS_SOLID, width, colour);
  const HGDIOBJ before = SelectObject(dc, pen);
  const std::vector<DWORD> counts(ends.size() / 2, 2);
  if (!counts.empty())
    PolyPolyline(dc, ends.data(), counts.data(), static_cast<DWORD>(counts.size()));
  SelectObject(dc, before);
  DeleteObject(pen);
}

} // namespace

void paintView(HDC dc, SIZE size) {
  // Into a picture in memory first: a frame appears whole, without flicker.
  const HDC memory = CreateCompatibleDC(dc);
  const HBITMAP bitmap = CreateCompatibleBitmap(dc, size.cx, size.cy);
  const HGDIOBJ oldBitmap = SelectObject(memory, bitmap);
  const HBRUSH paper = CreateSolidBrush(kPaper);
  const RECT all = {0, 0, size.cx, size.cy};
  FillRect(memory, &all, paper);
  DeleteObject(paper);

  std::set<int> selected;
  for (const AcDbObjectId id : host::selected())
    selected.insert(host::entityNumber(id));
  std::vector<POINT> plain, marked; // two for each segment
  forEachSegment(size, [&](int number, const Pixel& a, const Pixel& b) {
    std::vector<POINT>& lines = selected.count(number) != 0 ? marked : plain;
    for (const Pixel& end : {a, b})
      lines.push_back({static_cast<LONG>(end.x), static_cast<LONG>(end.y)});
  });
  drawSegments(memory, plain, 1, kInk);
  drawSegments(memory, marked, 2, kSelected);
  BitBlt(dc, 0, 0, size.cx, size.cy, memory, 0, 0, SRCCOPY);
  SelectObject(memory, oldBitmap);
  DeleteObject(bitmap);
  DeleteDC(memory);
}

int objectAt(POINT point, SIZE size) {
  int best = 0;
  double nearest = kPickRadius;
  forEachSegment(size, [&](int number, const Pixel& a, const Pixel& b) {
    const double d = distance(a, b, point);
    if (d < nearest) {
      nearest = d;
      best = number;
    }
  });
  return best;
}

} // namespace program
