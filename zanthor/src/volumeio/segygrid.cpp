#include "volumeio/segygrid.h"

#include <algorithm>

namespace volumeio {
namespace {
std::vector<int> distinctSorted(std::vector<int> numbers)
{
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

// Empty when `numbers` (distinct, increasing) have one constant step; otherwise why not.
QString spacingProblem(const std::vector<int>& numbers, const QString& what)
{
    for (std::size_t k = 2; k < numbers.size(); ++k) {
        const long long step = static_cast<long long>(numbers[1]) - numbers[0];
        const long long gap = static_cast<long long>(numbers[k]) - numbers[k - 1];
        if (gap != step)
            return QStringLiteral("irregular geometry: %1 numbers are not evenly spaced "
                                  "(step %2, but %3 follows %4)")
                .arg(what).arg(step).arg(numbers[k]).arg(numbers[k - 1]);
    }
    return {};
}

// Index of `number` in the evenly spaced `numbers`.
int indexOf(int number, const std::vector<int>& numbers)
{
    if (numbers.size() < 2) return 0;
    const long long step = static_cast<long long>(numbers[1]) - numbers[0];
    return static_cast<int>((static_cast<long long>(number) - numbers[0]) / step);
}

SegySorting sortingOf(const std::vector<int>& inlines, const std::vector<int>& crosslines)
{
    if (inlines.size() < 2 || inlines[0] == inlines[1]) return SegySorting::Inline;
    if (crosslines[0] == crosslines[1]) return SegySorting::Crossline;
    return SegySorting::Unknown;
}
} // namespace

QString inferSegyGrid(const std::vector<int>& inlines, const std::vector<int>& crosslines,
                      SegyGrid& grid)
{
    if (inlines.empty()) return QStringLiteral("the file holds no trace");
    if (inlines.size() != crosslines.size())
        return QStringLiteral("%1 inline numbers for %2 crossline numbers")
            .arg(inlines.size()).arg(crosslines.size());
    SegyGrid g;
    g.inlineNumbers = distinctSorted(inlines);
    g.crosslineNumbers = distinctSorted(crosslines);
    for (const QString& problem : {spacingProblem(g.inlineNumbers, QStringLiteral("inline")),
                                   spacingProblem(g.crosslineNumbers, QStringLiteral("crossline"))})
        if (!problem.isEmpty()) return problem;
    const std::size_t cells = g.inlineNumbers.size() * g.crosslineNumbers.size();
    if (cells != inlines.size())
        return QStringLiteral("irregular geometry: %1 traces for %2 inlines x %3 crosslines")
            .arg(inlines.size()).arg(g.inlineNumbers.size()).arg(g.crosslineNumbers.size());
    std::vector<char> filled(cells, 0);
    g.inlineIndexOfTrace.resize(inlines.size());
    g.crosslineIndexOfTrace.resize(inlines.size());
    for (std::size_t t = 0; t < inlines.size(); ++t) {
        const int i = indexOf(inlines[t], g.inlineNumbers);
        const int j = indexOf(crosslines[t], g.crosslineNumbers);
        char& cell = filled[static_cast<std::size_t>(i) * g.crosslineNumbers.size() + j];
        if (cell)
            return QStringLiteral(
                       "irregular geometry: inline %1 crossline %2 has more than one trace")
                .arg(inlines[t])
                .arg(crosslines[t]);
        cell = 1;
        g.inlineIndexOfTrace[t] = i;
        g.crosslineIndexOfTrace[t] = j;
    }
    g.sorting = sortingOf(inlines, crosslines);
    grid = std::move(g);
    return {};
}

QString segySortingName(SegySorting sorting)
{
    switch (sorting) {
    case SegySorting::Inline: return QStringLiteral("inline");
    case SegySorting::Crossline: return QStringLiteral("crossline");
    case SegySorting::Unknown: break;
    }
    return QStringLiteral("unknown");
}

} // namespace volumeio
