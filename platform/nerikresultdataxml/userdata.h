#pragma once

#include <QString>

class QXmlStreamReader;

namespace NerikResultDataXml {

class Utf8XmlWriter;

/// A user annotation of a range of a block's content: characters [start, end) (end
/// exclusive), an annotation type, a replacement text (text), a second text (text2) and the
/// covered text (the content the range covers). The members are public on purpose: the
/// result model edits them in place.
///
/// XML form (texts as elements, escaped like every text of the document):
///   <UserData start="4" end="9" type="Change">
///     <Text>new</Text><Text2/><CoveredText>old t</CoveredText>
///   </UserData>
class UserData
{
public:
    /// The type of an edit: the covered text has been replaced in the content by text.
    static QString const ChangeType; // "Change"
    /// The type of a comment: text is a remark on the covered text.
    static QString const CommentType; // "Comment"

    UserData() = default;
    UserData(int startPosition, int endPosition, QString const& userDataType,
             QString const& replacement = QString(), QString const& second = QString(),
             QString const& covered = QString());
    UserData(UserData const&) = default;
    UserData& operator=(UserData const&) = default;
    ~UserData();

    int start = 0;
    int end = 0;
    QString type;
    QString text;
    QString text2;
    QString coveredText;

    void WriteXml(Utf8XmlWriter& writer) const;
    /// Reads the element whose start tag the reader has just read; false with a
    /// "line X, column Y: ..." text in error on failure.
    bool ReadXml(QXmlStreamReader& reader, QString& error);

    bool operator==(UserData const& other) const;
    bool operator!=(UserData const& other) const { return !(*this == other); }
};

} // namespace NerikResultDataXml
