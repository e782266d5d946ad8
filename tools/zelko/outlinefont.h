#pragma once

#include <QByteArray>
#include <QPainterPath>
#include <QPointF>
#include <QString>
#include <unordered_map>

namespace zelkotool {

/// Text as filled outlines read straight from a TrueType font file.
///
/// The tool runs on a QCoreApplication, under which Qt has no font database; painting text
/// through QPainter would need a QGuiApplication. This reads the glyph outlines (cmap
/// format 4, loca, glyf with simple and composite glyphs, hmtx) and turns them into
/// QPainterPaths that any QPainter can fill. No hinting, no kerning: fine for labels.
class OutlineFont
{
public:
    /// Loads the font; false (and every path empty) when the file is missing or not a
    /// TrueType font with outlines.
    bool load(QString const& path);
    bool isValid() const { return m_unitsPerEm > 0; }

    /// The outline of text with its baseline starting at origin, pixelSize being the em size.
    QPainterPath textPath(QString const& text, double pixelSize, QPointF origin) const;
    /// Width of text at pixelSize.
    double advance(QString const& text, double pixelSize) const;

    /// The first of the usual places of DejaVu Sans (bold when asked) that loads.
    static QString defaultFontPath(bool bold = false);

private:
    quint16 u16(qint64 offset) const;
    qint16 s16(qint64 offset) const { return qint16(u16(offset)); }
    quint32 u32(qint64 offset) const;
    quint16 glyphIndex(uint codePoint) const;
    quint16 advanceWidth(quint16 glyph) const;
    QPainterPath const& glyphPath(quint16 glyph) const;
    void appendGlyph(QPainterPath& path, quint16 glyph, QTransform const& transform,
                     int depth) const;

    QByteArray m_data;
    int m_unitsPerEm = 0;
    int m_numGlyphs = 0;
    int m_numberOfHMetrics = 0;
    bool m_longLoca = false;
    qint64 m_cmap4 = -1;
    qint64 m_loca = -1;
    qint64 m_glyf = -1;
    qint64 m_glyfLength = 0;
    qint64 m_hmtx = -1;
    mutable std::unordered_map<quint16, QPainterPath> m_cache;
};

} // namespace zelkotool
