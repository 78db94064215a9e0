#pragma once

#include "calc/Crosstalk.h"

#include <QObject>
#include <vector>

namespace Tessaly {

class VQDReader;

// Undoes the crosstalk between fluorescence channels: light of one dye that a neighbouring channel
// sees too. Given the spillover matrix the user entered (row i, column j: the share of dye j's light in
// channel i, 1 on the diagonal), each event's peak heights are solved back to their true values and
// stored as "fl<c>_max_ctc". Refined peak heights are used once a refinement has computed them.
// Holds nothing between calls; runs on any thread.
class FLCompensation : public QObject
{
    Q_OBJECT

public:
    explicit FLCompensation(QObject* parent = nullptr);

    // False, with the reader unchanged, without a reader, with fewer than two channels, a matrix that
    // isn't channels x channels or has no inverse, a dataset without events, or a channel without peak
    // heights.
    bool compensate(VQDReader* reader, const std::vector<int>& channels, const SquareMatrix& matrix);

signals:
    void progressChanged(int percent);
};

} // namespace Tessaly
