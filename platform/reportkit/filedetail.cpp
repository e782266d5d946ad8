#include "filedetail.h"

namespace REPORTKIT {

bool FileDetail::operator==(FileDetail const& other) const
{
    return m_frequency == other.m_frequency && m_code == other.m_code &&
           m_channelSet == other.m_channelSet && (!m_channelSet || m_channel == other.m_channel);
}

} // namespace REPORTKIT
