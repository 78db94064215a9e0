#include "plot/PseudoLogTransform.h"

namespace Tessaly {

PseudoLogTransform::PseudoLogTransform(double linearThreshold, double slope)
    : m_linearThreshold(linearThreshold)
    , m_slope(slope)
{
}

PseudoLogTransform::~PseudoLogTransform() = default;

// The arithmetic is the core's, so that the axis draws exactly where density, contours and filters
// place a value in plot space.
double PseudoLogTransform::transform(double value) const
{
    return pseudoLogTransform(value, m_linearThreshold, m_slope);
}

double PseudoLogTransform::invTransform(double value) const
{
    return pseudoLogInverse(value, m_linearThreshold, m_slope);
}

QwtTransform* PseudoLogTransform::copy() const
{
    return new PseudoLogTransform(m_linearThreshold, m_slope);
}

} // namespace Tessaly
