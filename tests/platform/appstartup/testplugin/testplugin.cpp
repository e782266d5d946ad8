// A plugin for the start-up library's tests. Second names: "" and any other text make a
// counter; "none" makes nothing; "throw" throws from the factory.

#include "counterinstance.h"

#include <stdexcept>

namespace {

class Counter : public CounterInstance
{
public:
    explicit Counter(QString name) : m_name(std::move(name)) {}
    ~Counter() override
    {
        if (m_deathFlag) {
            *m_deathFlag = true;
        }
    }
    QString GetInstanceName() const override { return QStringLiteral("Counter"); }
    int Next() override { return ++m_count; }
    QString SecondName() const override { return m_name; }
    void SetDeathFlag(bool* flag) override { m_deathFlag = flag; }

private:
    QString m_name;
    int m_count = 0;
    bool* m_deathFlag = nullptr;
};

} // namespace

extern "C" ZELKO_PLUGIN_EXPORT IDllInstance* zelkoCreateDllInstance(char const* name)
{
    QString const secondName = QString::fromUtf8(name);
    if (secondName == QLatin1String("none")) {
        return nullptr;
    }
    if (secondName == QLatin1String("throw")) {
        throw std::runtime_error("refused");
    }
    return new Counter(secondName);
}
