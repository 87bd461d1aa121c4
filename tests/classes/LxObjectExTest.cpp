// Copyable counted objects: the two-sided copy pattern and its failure messages.
#include "lorvane/classes/LxObjectEx.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

using test::ExpectRaises;

/// Knows how to copy from points (and descendants of points).
class TPoint : public TLxObjectEx {
  LX_CLASS(TPoint, TLxObjectEx)
  TPoint(Integer AX = 0, Integer AY = 0) : X(AX), Y(AY) {}
  void Assign(TLxObjectEx* ASource) override {
    if (ASource && ASource->InheritsFrom(TPoint::StaticClass())) {
      const auto* Source = static_cast<TPoint*>(ASource);
      X = Source->X;
      Y = Source->Y;
      return;
    }
    TLxObjectEx::Assign(ASource);
  }
  Integer X, Y;

protected:
  ~TPoint() override = default;
};

class TPoint3D : public TPoint {
  LX_CLASS(TPoint3D, TPoint)
  using TPoint::TPoint;

protected:
  ~TPoint3D() override = default;
};

/// Knows how to copy itself into a point, which doesn't know labels.
class TLabel : public TLxObjectEx {
  LX_CLASS(TLabel, TLxObjectEx)
  TLabel() = default;
  void AssignTo(TLxObjectEx* ADest) override {
    if (ADest && ADest->InheritsFrom(TPoint::StaticClass())) {
      static_cast<TPoint*>(ADest)->X = Width;
      return;
    }
    TLxObjectEx::AssignTo(ADest);
  }
  Integer Width = 42;

protected:
  ~TLabel() override = default;
};

using LxObjectEx = test::LiveObjectsTest;

TEST_F(LxObjectEx, EitherSideOfTheCopyMayKnowTheOther) {
  TOwned<TPoint> Target(New<TPoint>());
  TOwned<TPoint3D> Source(New<TPoint3D>(3, 4));
  Target->Assign(Source.get());
  EXPECT_EQ(Target->X, 3);
  EXPECT_EQ(Target->Y, 4) << "the target knows descendants of its own class";

  TOwned<TLabel> Label(New<TLabel>());
  Target->Assign(Label.get());
  EXPECT_EQ(Target->X, 42) << "unknown to the target, so the source's AssignTo copies";
  EXPECT_EQ(Target->Y, 4);
}

TEST_F(LxObjectEx, UnhandledCopiesRaiseNamingBothClasses) {
  TOwned<TPoint> Point(New<TPoint>());
  TOwned<TLabel> Label(New<TLabel>());
  TOwned<TLabel> Other(New<TLabel>());
  ExpectRaises<EConvertError>([&] { Label->Assign(Point.get()); },
                              u"Cannot assign a TPoint to a TLabel");
  ExpectRaises<EConvertError>([&] { Label->Assign(Other.get()); },
                              u"Cannot assign a TLabel to a TLabel");
  ExpectRaises<EConvertError>([&] { Point->Assign(nullptr); }, u"Cannot assign a nil to a TPoint");
  ExpectRaises<EConvertError>([&] { Label->AssignTo(nullptr); },
                              u"Cannot assign a TLabel to a nil");
  EXPECT_EQ(Label->Width, 42) << "a failed copy changes nothing";
}

} // namespace
} // namespace lorvane
