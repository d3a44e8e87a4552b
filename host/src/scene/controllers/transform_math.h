// Transform arithmetic of the controllers: Euler XYZ angles of a rotation and the parts of a transform.
#pragma once

#include "geom.h"

namespace hostrt {

// Angles (radians) a, b, c with RotateXYZMatrix({a, b, c}) equal to the rotation part of m (rows normalised).
Point3 EulerXYZFromMatrix(const Matrix3& m);

// A transform taken apart as scale, then rotation, then translation: m = ScaleMatrix(scale) * rotation * T.
// A mirrored transform gets a negative x scale.
struct TransformParts {
    Point3 position;
    Matrix3 rotation;  // pure rotation, no translation
    Point3 scale{1.f, 1.f, 1.f};
};
TransformParts Decompose(const Matrix3& m);

// The rotation part of a quaternion as a matrix.
Matrix3 RotationOf(const Quat& q);

}  // namespace hostrt
