// SPDX-License-Identifier: MIT
#ifndef LUX_KERNELS_TRIG_NEAREST_ANGLE_H
#define LUX_KERNELS_TRIG_NEAREST_ANGLE_H

// The single nearest to the angle of a point whose coordinates are finite and not 0, and whose angle
// is a normal number. At any precision, to nearest.
float noxs_nearest_angle(const float* y, const float* x);

#endif
