#pragma once

#include <QString>

/// The answer of one calculation line of a burst scenario script ("name scalars | list ..."),
/// or an empty string when the name is no calculation.
QString calculate(QString const& line);
