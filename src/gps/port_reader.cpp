#include "gps/port_reader.h"

#include <algorithm>
#include <array>

namespace orvel {

AttemptEnd runProtocol(GpsProtocol& protocol, SerialPort& port, std::u16string_view portLabel, ScanSignals& signals,
                       GpsSink& sink, const ScanIndicator& indicator) {
  const std::u16string name(protocol.getName());
  sink.setStatusText(u"Поиск данных - " + name + u"...");
  port.purge();
  protocol.setPort(&port);
  protocol.open();

  bool searching = true;
  std::array<uint8_t, kReadChunk> chunk{};
  const auto end = [&](AttemptEnd how) {
    protocol.close();
    protocol.setPort(nullptr);
    return how;
  };
  // The receiver was found on this port and has now gone quiet or broken its stream.
  const auto lost = [&](std::u16string_view text) {
    signals.resetFound();
    sink.setStatusText(text);
    if (indicator.noConnection) indicator.noConnection();
    signals.waitStop(kLostPauseMs);
    return end(AttemptEnd::kNext);
  };

  for (;;) {
    if (searching ? signals.waitStopOrFound(kPollMs) : signals.waitStop(kPollMs)) return end(AttemptEnd::kEnd);

    const size_t waiting = port.bytesWaiting();
    ProcessResult result;
    if (waiting == 0) {
      result = protocol.process({});
      if (result == ProcessResult::kFailed) {
        if (searching) return end(AttemptEnd::kNext);
        return lost(u"Не обнаружено данных.");
      }
      continue;  // only bytes read can recognise a receiver
    } else {
      const size_t got = port.read(std::span(chunk).first(std::min(waiting, chunk.size())));
      result = protocol.process(std::span<const uint8_t>(chunk).first(got));
      if (result == ProcessResult::kFailed) {
        if (searching) return end(AttemptEnd::kNext);
        return lost(u"Ошибка протокола.");
      }
    }
    if (searching && result == ProcessResult::kRecognised) {
      searching = false;
      signals.setFound();
      sink.setStatusText(name + u" через " + std::u16string(portLabel));
      if (indicator.connected) indicator.connected();
    }
  }
}

void readPort(const std::string& path, SerialPort& port, std::u16string_view portLabel,
              std::span<GpsProtocol* const> protocols, ScanSignals& signals, GpsSink& sink,
              const ScanIndicator& indicator) {
  if (protocols.empty()) return;
  for (size_t turn = 0; !signals.stopSet(); ++turn) {
    // After an unplug the old handle stays dead; a device that came back is a new open.
    if (!port.healthy()) port.open(path);
    if (runProtocol(*protocols[turn % protocols.size()], port, portLabel, signals, sink, indicator) ==
        AttemptEnd::kEnd) {
      return;
    }
    sink.fixLost();
  }
}

}  // namespace orvel
