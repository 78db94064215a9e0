#include "calc/Crosstalk.h"

#include <algorithm>
#include <armadillo>
#include <cmath>
#include <limits>

namespace Tessaly {

bool isSquare(const SquareMatrix& matrix, std::size_t n)
{
    if (n == 0 || matrix.size() != n)
        return false;
    for (const std::vector<double>& row : matrix)
        if (row.size() != n)
            return false;
    return true;
}

bool invertMatrix(const SquareMatrix& matrix, SquareMatrix& inverse)
{
    const std::size_t n = matrix.size();
    if (!isSquare(matrix, n))
        return false;
    arma::mat a(n, n);
    for (std::size_t r = 0; r < n; ++r)
        for (std::size_t c = 0; c < n; ++c)
            a(r, c) = matrix[r][c];
    if (!a.is_finite())
        return false;
    arma::mat inv;
    // The library's solver reports exact singularity; a result that overflowed is no inverse either.
    if (!arma::inv(inv, a) || !inv.is_finite())
        return false;
    inverse.assign(n, std::vector<double>(n));
    for (std::size_t r = 0; r < n; ++r)
        for (std::size_t c = 0; c < n; ++c)
            inverse[r][c] = inv(r, c);
    return true;
}

void compensateEvents(const std::vector<const std::vector<double>*>& sources, const SquareMatrix& inverse,
    std::size_t begin, std::size_t end, std::vector<std::vector<double>>& outputs)
{
    const std::size_t n = sources.size();
    std::size_t complete = end;
    for (const std::vector<double>* source : sources)
        complete = std::max(begin, std::min(complete, source->size()));

    // Channel by channel over whole columns while every source has its values, so that the inner loop
    // runs over contiguous memory; the sum runs over the sources in the same order either way.
    for (std::size_t i = 0; i < n; ++i) {
        double* out = outputs[i].data();
        std::fill(out + begin, out + complete, 0.0);
        for (std::size_t j = 0; j < n; ++j) {
            const double weight = inverse[i][j];
            const double* in = sources[j]->data();
            for (std::size_t e = begin; e < complete; ++e)
                out[e] += weight * in[e];
        }
    }

    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> y(n);
    for (std::size_t e = complete; e < end; ++e) {
        for (std::size_t j = 0; j < n; ++j)
            y[j] = e < sources[j]->size() ? (*sources[j])[e] : nan;
        for (std::size_t i = 0; i < n; ++i) {
            double sum = 0.0;
            for (std::size_t j = 0; j < n; ++j)
                sum += inverse[i][j] * y[j];
            outputs[i][e] = sum;
        }
    }
}

} // namespace Tessaly
