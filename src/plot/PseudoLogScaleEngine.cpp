#include "plot/PseudoLogScaleEngine.h"

#include "plot/PseudoLogTransform.h"

#include <QtGlobal>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Tessaly {

namespace {

constexpr double maxDouble = std::numeric_limits<double>::max();
// The ladder climbs about a decade a round, so a hundred rounds cover any practical axis; on
// extreme intervals the bound ends the walk before the upper bound, which keeps the tick count small.
constexpr int maxLadderRounds = 100;
constexpr double maxReservedTicks = 10000.0;
constexpr int minorTicksPerInterval = 10;

// Whether two values differ by no more than rounding, relative to the smaller one.
bool essentiallyEqual(double a, double b)
{
    return std::fabs(a - b) * 1e12 <= std::min(std::fabs(a), std::fabs(b));
}

// Puts the bounds on multiples of the step. A bound that is already there up to rounding keeps its
// own value, unless the multiple is (nearly) zero, so that an axis can start exactly at zero. A
// bound within one step of the largest double stays, since the multiple beyond it does not exist.
QwtInterval alignToStep(const QwtInterval& interval, double stepSize)
{
    constexpr double nearZero = 1e-12;
    double x1 = interval.minValue();
    double x2 = interval.maxValue();
    if (-maxDouble + stepSize <= x1) {
        const double x = QwtScaleArithmetic::floorEps(x1, stepSize);
        if (std::fabs(x) <= nearZero || !essentiallyEqual(x1, x))
            x1 = x;
    }
    if (maxDouble - stepSize >= x2) {
        const double x = QwtScaleArithmetic::ceilEps(x2, stepSize);
        if (std::fabs(x) <= nearZero || !essentiallyEqual(x2, x))
            x2 = x;
    }
    return QwtInterval(x1, x2);
}

// The next rung of the decade ladder above v: the next power of ten for positive values, a tenth
// of the decade of |v| for negative ones. From a negative value that is not a power of ten the
// ladder thus skips a decade (-5000 goes to -100, not -1000), and from -1 the rung -0.1 rounds to
// zero, which is where the ladder crosses to the positive side.
double nextRung(double v)
{
    if (v < 0.0)
        return -std::pow(10.0, std::floor(std::log10(-v)) - 1.0);
    if (v > 0.0)
        return std::pow(10.0, std::floor(std::log10(v)) + 1.0);
    return 1.0;
}

} // namespace

PseudoLogScaleEngine::PseudoLogScaleEngine(double linearThreshold, double linearRange)
    : QwtScaleEngine(10)
    , m_linearThreshold(linearThreshold)
    , m_linearRange(linearRange)
{
    setTransformation(new PseudoLogTransform(linearThreshold, linearRange / linearThreshold));
}

PseudoLogScaleEngine::~PseudoLogScaleEngine() = default;

void PseudoLogScaleEngine::autoScale(int maxNumSteps, double& x1, double& x2, double& stepSize) const
{
    QwtInterval interval = QwtInterval(x1, x2).normalized();
    interval.setMinValue(interval.minValue() - lowerMargin());
    interval.setMaxValue(interval.maxValue() + upperMargin());

    if (testAttribute(QwtScaleEngine::Symmetric))
        interval = interval.symmetrize(reference());
    if (testAttribute(QwtScaleEngine::IncludeReference))
        interval = interval.extend(reference());

    // A single value still gets an axis around it.
    if (interval.width() == 0.0)
        interval = buildInterval(interval.minValue());

    stepSize = QwtScaleArithmetic::divideInterval(interval.width(), std::max(maxNumSteps, 1), base());

    if (!testAttribute(QwtScaleEngine::Floating))
        interval = alignToStep(interval, stepSize);

    x1 = interval.minValue();
    x2 = interval.maxValue();

    if (testAttribute(QwtScaleEngine::Inverted)) {
        std::swap(x1, x2);
        stepSize = -stepSize;
    }
}

QwtScaleDiv PseudoLogScaleEngine::divideScale(
    double x1, double x2, int maxMajorSteps, int maxMinorSteps, double stepSize) const
{
    const QwtInterval interval = QwtInterval(x1, x2).normalized();

    const long double width
        = static_cast<long double>(interval.maxValue()) - static_cast<long double>(interval.minValue());
    if (width > static_cast<long double>(maxDouble)) {
        qWarning("%s", pseudoLogOverflowWarning);
        return QwtScaleDiv();
    }
    if (!(interval.width() > 0.0))
        return QwtScaleDiv();

    stepSize = std::fabs(stepSize);
    if (stepSize == 0.0)
        stepSize = QwtScaleArithmetic::divideInterval(interval.width(), std::max(maxMajorSteps, 1), base());

    QwtScaleDiv scaleDiv;
    if (stepSize != 0.0) {
        QList<double> ticks[QwtScaleDiv::NTickTypes];
        ticks[QwtScaleDiv::MajorTick] = buildMajorTicks(alignToStep(interval, stepSize), stepSize);
        if (maxMinorSteps > 0)
            ticks[QwtScaleDiv::MinorTick] = buildMinorTicks(ticks[QwtScaleDiv::MajorTick]);

        // Ticks that are zero but for rounding are drawn and labelled as exactly zero.
        const double zeroTolerance = std::fabs(stepSize * 1e-6);
        for (QList<double>& list : ticks) {
            list = strip(list, interval);
            for (double& tick : list)
                if (std::fabs(tick) <= zeroTolerance)
                    tick = 0.0;
        }
        scaleDiv = QwtScaleDiv(interval, ticks);
    }

    if (x1 > x2)
        scaleDiv.invert();
    return scaleDiv;
}

QList<double> PseudoLogScaleEngine::buildMajorTicks(const QwtInterval& bounds, double stepSize) const
{
    const double lower = bounds.minValue();
    const double upper = bounds.maxValue();

    QList<double> ticks;
    ticks.reserve(static_cast<int>(std::min(std::round(bounds.width() / stepSize) + 1.0, maxReservedTicks)));
    ticks += lower;

    // Inside the linear region the decades lie too close together to be labelled, except zero.
    double v = lower;
    for (int round = 0; round < maxLadderRounds && v < upper; ++round) {
        const double rung = std::round(nextRung(v));
        if ((rung < upper && std::fabs(rung) >= m_linearThreshold) || rung == 0.0)
            ticks += rung;
        v = rung;
    }

    ticks += upper;
    return ticks;
}

QList<double> PseudoLogScaleEngine::buildMinorTicks(const QList<double>& majorTicks) const
{
    // Minor ticks step by the decade of the major tick they follow (for a negative one, the decade
    // below, so that -1000 steps by 100 towards -100), and by a tenth of the threshold from zero.
    QList<double> ticks;
    for (int i = 0; i + 1 < majorTicks.size(); ++i) {
        const double from = majorTicks[i];
        const double to = majorTicks[i + 1];
        double increment = m_linearThreshold / 10.0;
        if (std::fabs(from) > 1e-12) {
            double exponent = std::floor(std::log10(std::fabs(from)));
            if (from < 0.0)
                exponent -= 1.0;
            increment = std::pow(10.0, exponent);
        }
        double position = from;
        for (int k = 0; k < minorTicksPerInterval; ++k) {
            position += increment;
            if (position > to)
                break;
            ticks += position;
        }
    }
    return ticks;
}

} // namespace Tessaly
