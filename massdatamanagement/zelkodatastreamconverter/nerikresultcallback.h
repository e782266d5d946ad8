#pragma once

namespace NerikResultDataXml {
class Transmission;
}

namespace zelkodatastreamconverter {

/// Told by a result model each time it closes its current transmission. The transmission
/// stays owned by the model's document. The converters of this library install none; hosts
/// that drive a model themselves do.
class NerikResultCallback
{
public:
    virtual void onTransmissionClosed(NerikResultDataXml::Transmission* transmission) = 0;

protected:
    NerikResultCallback() = default;
    NerikResultCallback(NerikResultCallback const&) = default;
    NerikResultCallback(NerikResultCallback&&) = default;
    NerikResultCallback& operator=(NerikResultCallback const&) = default;
    NerikResultCallback& operator=(NerikResultCallback&&) = default;
    ~NerikResultCallback() = default;
};

} // namespace zelkodatastreamconverter
