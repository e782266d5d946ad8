#pragma once

namespace REPORTKIT {
class IRGObject;
}

namespace zelkodatastreamconverter {

/// Told about every output file when it is opened, grown or completed. The record is a
/// REPORTKIT::Binary, REPORTKIT::Text or REPORTKIT::Picture. Never deleted through this
/// interface, so it has no virtual destructor.
class FileInfoCallback
{
public:
    virtual void fileInfo(REPORTKIT::IRGObject const& record) = 0;

protected:
    FileInfoCallback() = default;
    FileInfoCallback(FileInfoCallback const&) = default;
    FileInfoCallback(FileInfoCallback&&) = default;
    FileInfoCallback& operator=(FileInfoCallback const&) = default;
    FileInfoCallback& operator=(FileInfoCallback&&) = default;
    ~FileInfoCallback() = default;
};

} // namespace zelkodatastreamconverter
