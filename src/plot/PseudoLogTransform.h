#pragma once

#include "core/ScaleModes.h"

#include <qwt_transform.h>

namespace Tessaly {

// Axis transform that is linear within [-linearThreshold, linearThreshold], so that zero and
// negative values can be shown, and logarithmic (base 10) beyond it on both sides. The pieces meet
// in value at ±threshold (±slope * threshold), not in derivative.
class PseudoLogTransform : public QwtTransform
{
public:
    PseudoLogTransform() = default;
    PseudoLogTransform(double linearThreshold, double slope);
    ~PseudoLogTransform() override;

    double transform(double value) const override;
    double invTransform(double value) const override;
    QwtTransform* copy() const override;

    double linearThreshold() const { return m_linearThreshold; }
    double slope() const { return m_slope; }

private:
    double m_linearThreshold = pseudoLogDefaultThreshold;
    double m_slope = pseudoLogDefaultSlope;
};

} // namespace Tessaly
