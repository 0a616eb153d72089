#include "pages/gauge_types.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <system_error>
#include <utility>

#include <QLocale>
#include <QString>
#include <QTime>

#include "gps/ole_date.h"
#include "pages/gauge.h"
#include "geo/coords.h"

namespace orvel {

namespace {

std::u16string printed(const char* format, double value) {
  char text[kGaugeTextCapacity * 3];
  std::snprintf(text, sizeof text, format, value);
  return QString::fromUtf8(text).left(int(kGaugeTextCapacity) - 1).toStdU16String();
}

// A real-valued field of the fix, printed with `format` while its bit is set.
class RealGauge : public Gauge {
 public:
  RealGauge(uint32_t bit, float GpsFix::*field, const char* format)
      : bit_(bit), field_(field), format_(format) {}

  void update(const GpsFix& fix) override {
    valid_ = (fix.flags & bit_) != 0;
    value_ = fix.*field_;  // copied even when invalid, as the receiver left it
  }
  std::u16string format() const override {
    return valid_ ? printed(format_, static_cast<double>(value_)) : u"-";
  }

 private:
  uint32_t bit_;
  float GpsFix::*field_;
  const char* format_;
  bool valid_ = false;
  float value_ = 0.0f;
};

// Latitude or longitude in the program's coordinate notation.
class CoordinateGauge : public Gauge {
 public:
  explicit CoordinateGauge(bool latitude) : latitude_(latitude) {}

  void update(const GpsFix& fix) override {
    valid_ = fix.has(kFixPosition);
    value_ = latitude_ ? fix.latitude : fix.longitude;
  }
  std::u16string format() const override {
    if (!valid_) return u"-";
    return latitude_ ? formatLatitude(value_) : formatLongitude(value_);
  }

 private:
  bool latitude_;
  bool valid_ = false;
  float value_ = 0.0f;
};

class SatellitesUsedGauge : public Gauge {
 public:
  void update(const GpsFix& fix) override {
    valid_ = fix.has(kFixSatellitesUsed);
    value_ = fix.satellitesUsed;
  }
  std::u16string format() const override {
    return valid_ ? QString::number(value_).toStdU16String() : u"-";
  }

 private:
  bool valid_ = false;
  uint32_t value_ = 0;
};

std::unique_ptr<Gauge> realGauge(uint32_t bit, float GpsFix::*field, const char* format) {
  return std::make_unique<RealGauge>(bit, field, format);
}

class BatteryGauge : public Gauge {
 public:
  explicit BatteryGauge(std::filesystem::path supplies) : supplies_(std::move(supplies)) {}
  void update(const GpsFix&) override {}
  std::u16string format() const override { return formatBatteryState(supplies_); }

 private:
  std::filesystem::path supplies_;
};

class GpsTimeGauge : public Gauge {
 public:
  void update(const GpsFix& fix) override {
    valid_ = fix.has(kFixTime);
    time_ = fix.time;
  }
  std::u16string format() const override {
    return valid_ ? formatLocalTimeOfDay(time_) : u"-";
  }

 private:
  bool valid_ = false;
  double time_ = 0.0;
};

// The first line of a sysfs attribute, without its line end; empty when unreadable.
std::string readAttribute(const std::filesystem::path& file) {
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r' || line.back() == ' ')) {
    line.pop_back();
  }
  return line;
}

// The time format without its time-zone name: the time gauge shows a time of day.
QString timeFormatWithoutZone() {
  const QString format = QLocale::system().timeFormat(QLocale::LongFormat);
  QString out;
  bool quoted = false;
  for (QChar c : format) {
    if (c == u'\'') quoted = !quoted;
    if (!quoted && c == u't') continue;
    out += c;
  }
  return out.trimmed();
}

}  // namespace

// Registrations, in this order; the list they build runs from the last to the first.
void registerGaugeTypes(GaugeRegistry& registry, std::filesystem::path powerSupplies) {
  const auto add = [&registry](std::unique_ptr<Gauge> gauge, std::u16string_view key, std::u16string_view title) {
    registry.registerGauge(std::move(gauge), key, title);
  };
  add(realGauge(kFixCourse, &GpsFix::course, "%.1f°"), u"azimuth", u"Азимут");
  add(realGauge(kFixAltitude, &GpsFix::altitude, "%.1f м"), u"elev", u"Высота");
  add(realGauge(kFixVerticalError, &GpsFix::verticalError, "%.1f м"), u"elevprec", u"Ошибка высоты");
  add(realGauge(kFixGeoidSeparation, &GpsFix::geoidSeparation, "%.1f м"), u"geoid", u"Высота геоида");
  add(realGauge(kFixHdop, &GpsFix::hdop, "%.1f"), u"hdop", u"HDOP");
  add(std::make_unique<CoordinateGauge>(true), u"y", u"Широта");
  add(std::make_unique<CoordinateGauge>(false), u"x", u"Долгота");
  add(std::make_unique<BatteryGauge>(std::move(powerSupplies)), u"power", u"Аккумулятор");
  add(realGauge(kFixHorizontalError, &GpsFix::horizontalError, "%.1f м"), u"xyprec", u"Ошибка");
  add(std::make_unique<SatellitesUsedGauge>(), u"satellites", u"Исп. спутников");
  add(realGauge(kFixSpeed, &GpsFix::speed, "%.1f км/ч"), u"speed", u"Скорость");
  add(std::make_unique<GpsTimeGauge>(), u"time", u"Время по GPS");
  add(realGauge(kFixMagneticVariation, &GpsFix::magneticVariation, "%.1f°"), u"magvar", u"Магн. склонение");
  add(realGauge(kFixVdop, &GpsFix::vdop, "%.1f"), u"vdop", u"VDOP");
  add(realGauge(kFixVerticalSpeed, &GpsFix::verticalSpeed, "%.1f м/с"), u"vspeed", u"Верт. скорость");
}

std::u16string formatBatteryState(const std::filesystem::path& powerSupplies) {
  std::error_code error;
  std::filesystem::directory_iterator supplies(powerSupplies, error);
  if (error) return u"-";
  bool externalPower = false;
  int capacity = -1;
  for (const auto& supply : supplies) {
    const std::string type = readAttribute(supply.path() / "type");
    if (type == "Battery") {
      if (capacity < 0) {
        const std::string text = readAttribute(supply.path() / "capacity");
        char* end = nullptr;
        const long value = text.empty() ? -1 : std::strtol(text.c_str(), &end, 10);
        if (end != nullptr && *end == '\0' && value >= 0) capacity = int(std::min(value, 1000L));
      }
    } else if (readAttribute(supply.path() / "online") == "1") {
      externalPower = true;  // mains or USB
    }
  }
  if (externalPower) return u"Зарядка";
  if (capacity < 0 || capacity > 100) return u"-";
  return QString::asprintf("%d %%", capacity).toStdU16String();
}

std::u16string formatTimeOfDay(int hour, int minute, int second) {
  return QLocale::system().toString(QTime(hour, minute, second), timeFormatWithoutZone()).toStdU16String();
}

std::u16string formatLocalTimeOfDay(double automationDate) {
  const double seconds = automationDateToUnixSeconds(automationDate);
  if (!std::isfinite(seconds) || std::fabs(seconds) > 4e11) return u"-";
  const std::time_t whole = static_cast<std::time_t>(std::floor(seconds + 0.5));
  std::tm local{};
  if (localtime_r(&whole, &local) == nullptr) return u"-";
  return formatTimeOfDay(local.tm_hour, local.tm_min, local.tm_sec);
}

}  // namespace orvel
