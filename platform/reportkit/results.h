#pragma once

#include "binary.h"
#include "irgobject.h"
#include "picture.h"
#include "text.h"

#include <vector>

namespace REPORTKIT {

/// The files a conversion produced: one list each of binary, text and picture records.
///
/// XML form:
///   <Results>
///     <Binary .../>...  <Text .../>...  <Picture .../>...
///   </Results>
/// The lists keep their order; GetXmlString() followed by SetXmlString() gives an equal
/// object.
class Results : public IRGObject
{
public:
    std::vector<Binary>& GetBinary() { return m_binary; }
    std::vector<Binary> const& GetBinary() const { return m_binary; }
    std::vector<Text>& GetText() { return m_text; }
    std::vector<Text> const& GetText() const { return m_text; }
    std::vector<Picture>& GetPicture() { return m_picture; }
    std::vector<Picture> const& GetPicture() const { return m_picture; }

    void AppendBinary(Binary const& record) { m_binary.push_back(record); }
    void AppendText(Text const& record) { m_text.push_back(record); }
    void AppendPicture(Picture const& record) { m_picture.push_back(record); }

    bool IsEmpty() const { return m_binary.empty() && m_text.empty() && m_picture.empty(); }

    QString GetXmlString() const override;
    bool SetXmlString(QString const& xml, int options) override;

    bool operator==(Results const& other) const;
    bool operator!=(Results const& other) const { return !(*this == other); }

private:
    std::vector<Binary> m_binary;
    std::vector<Text> m_text;
    std::vector<Picture> m_picture;
};

} // namespace REPORTKIT
