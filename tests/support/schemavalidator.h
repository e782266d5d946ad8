#pragma once

#include <QString>

namespace zelkotest {

/// Validates XML against one of the project's schemas with xmllint, as a user would.
/// Returns an empty string when valid, otherwise xmllint's complaint.
QString validateXmlFile(QString const& xmlPath, QString const& schemaName);
QString validateXmlText(QString const& xml, QString const& schemaName);

} // namespace zelkotest
