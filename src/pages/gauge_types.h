#pragma once
// The fifteen gauge types. Thirteen copy one fix field with its validity bit; the battery
// gauge asks the power supply when it is formatted; the GPS time gauge shows the fix time
// in the user's time zone and time format.
#include <filesystem>
#include <string>

namespace orvel {

class GaugeRegistry;

// Where the power supplies are listed.
inline constexpr char kPowerSupplyRoot[] = "/sys/class/power_supply";

// Registers the fifteen types; the battery gauge reads the supplies below `powerSupplies`
// (tests point it at a folder of their own).
void registerGaugeTypes(GaugeRegistry& registry, std::filesystem::path powerSupplies = kPowerSupplyRoot);

// The battery gauge's text: "Зарядка" on external power, "<n> %" for a known charge, "-"
// when the supplies cannot be read or the charge is unknown.
std::u16string formatBatteryState(const std::filesystem::path& powerSupplies);

// A UTC automation date as the time of day in the C library's local time zone, in the
// system locale's time format; "-" for a date that names no time.
std::u16string formatLocalTimeOfDay(double automationDate);
// The system locale's time format applied to a time of day (no time-zone name).
std::u16string formatTimeOfDay(int hour, int minute, int second);

}  // namespace orvel
