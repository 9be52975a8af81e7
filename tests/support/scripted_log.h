#pragma once

#include "core_v2masterlogger.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>

namespace test {

/// Is given lines as "CHANNEL text", for example "WARN handler locked".
using OnLine = std::function<void(const std::string& line)>;

/// Watches channels and hands their lines to a function.
class ScriptedObserver : public core::GlobalLogObserver {
public:
    ScriptedObserver(std::initializer_list<int32_t> channels, OnLine onLine)
        : d_onLine(std::move(onLine)) {
        for (const int32_t channel : channels)
            watch(channel);
        core::MasterLogger::registerObserver(this);
    }
    ~ScriptedObserver() override { detach(); }

    void observe(int32_t, uint32_t, const core::ChannelRecord& record, const char* text,
                 size_t length) override {
        d_onLine(std::string(record.name) + ' ' + std::string(text, length));
    }
    void setBusy(bool busy) { d_busy = busy; }

private:
    OnLine d_onLine;
};

/// An implementation that hands its lines to a function, the logger's id in front as in
/// "7 WARN handler locked", and tells another function when it is destroyed.
class ScriptedImpl : public core::LogImpl {
public:
    explicit ScriptedImpl(
        OnLine onLine, std::function<void()> onDestroyed = [] {})
        : d_onLine(std::move(onLine)), d_onDestroyed(std::move(onDestroyed)) {}
    ~ScriptedImpl() override { d_onDestroyed(); }

    void write(int32_t, uint32_t id, const core::ChannelRecord& record, const char* text,
               size_t length) override {
        d_onLine(std::to_string(id) + ' ' + record.name + ' ' + std::string(text, length));
    }

private:
    OnLine d_onLine;
    std::function<void()> d_onDestroyed;
};

} // namespace test
