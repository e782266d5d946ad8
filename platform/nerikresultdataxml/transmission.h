#pragma once

#include "datablock.h"
#include "inerikresultdata.h"
#include "info.h"
#include "ownedlist.h"
#include "pdudatablock.h"

#include <functional>

class QXmlStreamReader;

namespace NerikResultDataXml {

/// Tells whether a text data block goes into a written document (see
/// NerikResultData::SaveFile()).
using DataBlockFilter = std::function<bool(DataBlock const&)>;

/// One transmission: start and stop time, the settings records (Info), the text data blocks
/// (one live block per channel) and the PDU data blocks, each list in insertion order.
/// The transmission owns everything added to it; copies are deep.
///
/// XML form:
///   <Transmission startTime="..." stopTime="...">
///     <Info .../>...  <DataBlock .../>...  <PDUDataBlock .../>...
///   </Transmission>
class Transmission : public INerikResultData
{
public:
    Transmission() = default;
    Transmission(Transmission const& other) = default;
    Transmission(Transmission&& other) noexcept = default;
    Transmission& operator=(Transmission const& other) = default;
    Transmission& operator=(Transmission&& other) noexcept = default;
    ~Transmission() override;

    QDateTime const& GetStartTime() const { return m_startTime; }
    void SetStartTime(QDateTime const& time) { m_startTime = time; }
    QDateTime const& GetStopTime() const { return m_stopTime; }
    void SetStopTime(QDateTime const& time) { m_stopTime = time; }

    /// Appends; the transmission takes ownership.
    void AddInfo(Info* info);
    QList<Info*>& GetInfos() { return m_infos.items(); }
    QList<Info*> const& GetInfos() const { return m_infos.items(); }

    /// Appends; the transmission takes ownership.
    void AddDataBlock(DataBlock* block);
    QList<DataBlock*>& GetDataBlock() { return m_dataBlocks.items(); }
    QList<DataBlock*> const& GetDataBlock() const { return m_dataBlocks.items(); }

    /// Appends; the transmission takes ownership.
    void AddPDUDataBlock(PDUDataBlock* block);
    QList<PDUDataBlock*>& GetPDUDataBlocks() { return m_pduDataBlocks.items(); }
    QList<PDUDataBlock*> const& GetPDUDataBlocks() const { return m_pduDataBlocks.items(); }
    /// The last of these blocks with the ID, or null (an indexed lookup, see OwnedList).
    PDUDataBlock* FindPDUDataBlock(int id) const { return m_pduDataBlocks.findLastById(id); }

    /// Deletes every info, data block and PDU data block.
    void Clear();

    void WriteXml(Utf8XmlWriter& writer) const override;
    /// Writes only the data blocks that filter accepts (all when filter is empty).
    void WriteXml(Utf8XmlWriter& writer, DataBlockFilter const& filter) const;
    bool ReadXml(QXmlStreamReader& reader, QString& error);
    /// Reads a standalone <Transmission> document as GetXmlString() writes it; false with
    /// a "line X, column Y: ..." text in error (the transmission is then unchanged).
    bool SetXmlString(QString const& xml, QString& error);

    bool operator==(Transmission const& other) const;
    bool operator!=(Transmission const& other) const { return !(*this == other); }

private:
    QDateTime m_startTime;
    QDateTime m_stopTime;
    OwnedList<Info> m_infos;
    OwnedList<DataBlock> m_dataBlocks;
    OwnedList<PDUDataBlock> m_pduDataBlocks;
};

} // namespace NerikResultDataXml
