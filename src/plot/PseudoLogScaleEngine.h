#pragma once

#include <QList>
#include <qwt_interval.h>
#include <qwt_scale_div.h>
#include <qwt_scale_engine.h>

namespace Tessaly {

// Logged when an interval is too wide to be divided; the axis is then left without ticks.
inline constexpr char pseudoLogOverflowWarning[] = "PseudoLogScaleEngine::divideScale: overflow";

// Scale engine of the pseudo-log axis. Major ticks do not follow the step but climb a ladder of
// decades (..., -100, -10, -1, 0, 1, 10, 100, ...), of which only those at or beyond the linear
// threshold are shown, plus zero and the bounds. It installs a PseudoLogTransform with the same
// threshold, whose linear piece spans [-linearRange, linearRange] in plot space.
class PseudoLogScaleEngine : public QwtScaleEngine
{
public:
    PseudoLogScaleEngine(double linearThreshold, double linearRange);
    ~PseudoLogScaleEngine() override;

    void autoScale(int maxNumSteps, double& x1, double& x2, double& stepSize) const override;
    QwtScaleDiv divideScale(
        double x1, double x2, int maxMajorSteps, int maxMinorSteps, double stepSize = 0.0) const override;

    double linearThreshold() const { return m_linearThreshold; }
    double linearRange() const { return m_linearRange; }

private:
    QList<double> buildMajorTicks(const QwtInterval& bounds, double stepSize) const;
    QList<double> buildMinorTicks(const QList<double>& majorTicks) const;

    double m_linearThreshold;
    double m_linearRange;
};

} // namespace Tessaly
