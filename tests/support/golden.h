#pragma once

#include <QByteArray>
#include <QString>

namespace zelkotest {

/// Compares actual output with the golden file tests/data/<relativePath>. With the
/// environment variable ZELKO_REGENERATE_GOLDEN=1 the golden file is rewritten instead, so that
/// an intended change shows up as a reviewable diff. Returns an empty string when equal,
/// otherwise a description of the first difference.
QString compareWithGolden(QByteArray const& actual, QString const& relativePath);

/// The whole file; empty when it cannot be read.
QByteArray readFile(QString const& path);

} // namespace zelkotest
