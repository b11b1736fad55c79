#include "collection/textorder.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <vector>

namespace {
QCollator collator()
{
    // The "C" locale compares numbers of characters alone.
    const QLocale system;
    QCollator collator(system.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates)
                                                       : system);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}
} // namespace

QVector<int> TextOrder::sorted(const QStringList& texts, bool backwards)
{
    const QCollator order = collator();
    std::vector<QCollatorSortKey> keys; // comparing texts themselves takes ten times as long
    keys.reserve(size_t(texts.size()));
    QVector<int> positions;
    positions.reserve(texts.size());
    QVector<int> empty;
    for (int i = 0; i < texts.size(); ++i) {
        const bool again = i > 0 && texts.at(i) == texts.at(i - 1);
        keys.push_back(again ? keys.back() : order.sortKey(texts.at(i)));
        (texts.at(i).isEmpty() ? empty : positions).append(i);
    }
    std::stable_sort(positions.begin(), positions.end(), [&](int left, int right) {
        const int compared = keys[size_t(left)].compare(keys[size_t(right)]);
        return backwards ? compared > 0 : compared < 0;
    });
    return positions + empty;
}
