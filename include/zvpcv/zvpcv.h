/* Everything zvpCV exports. Include this, or only the header of the subsystem you use. */
#ifndef ZVPCV_ZVPCV_H
#define ZVPCV_ZVPCV_H

#include <zvpcv/arithmetic.h>
#include <zvpcv/detect.h>
#include <zvpcv/distance.h>
#include <zvpcv/features.h>
#include <zvpcv/filter.h>
#include <zvpcv/geometry.h>
#include <zvpcv/integral.h>
#include <zvpcv/morphology.h>
#include <zvpcv/pyramid.h>
#include <zvpcv/segment.h>
#include <zvpcv/types.h>
#include <zvpcv/version.h>

#endif
