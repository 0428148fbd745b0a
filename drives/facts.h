// The facts of a host's drives, as values. What takes them out of blocks and reports, what judges
// them and what shows them lives elsewhere.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/count128.h"

namespace drives {

// All texts are valid UTF-8 and may hold any character: drives and registries choose them.

// Whether a value, a worst value or a threshold is one that the standard allows as such.
constexpr bool IsValidValue(int value) { return value >= 1 && value <= 253; }

// The attributes that hold a temperature.
constexpr bool IsTemperature(std::uint8_t id) { return id == 190 || id == 194; }

struct Counts {
  std::uint8_t worst = 0;  // the lowest normalized value so far
  std::uint64_t raw = 0;   // 48 bits, which each maker uses in its own way
};

struct Attribute {
  std::uint8_t id = 0;  // from 1 in a report
  std::string name;
  std::uint16_t flags = 0;  // the first byte that the drive delivers is the high byte
  std::uint8_t value = 0;
  std::uint8_t threshold = 0;
  bool valid = true;  // false: the report calls value or threshold invalid
  bool preFailure = false;
  bool warns = false;                 // the report's status says that the threshold is reached
  std::optional<Counts> counts = {};  // from a recording
};

enum class Protocol { kATA, kNVMe, kSCSI };

// What a figure of a log counts. Temperatures are in degrees Celsius, as the bits of a signed
// number.
enum class Unit { kNone, kPercent, kCelsius, kMinutes, kHours, kDataUnits, kBytes };

// A figure of a drive's own log.
struct Figure {
  std::string_view section;  // of the JSON document, as `group` within that; empty: none
  std::string_view group;    // "read"
  std::string_view key;      // "total_uncorrected_errors"
  std::string name;          // for people: "Read errors, not corrected"
  base::Count128 value;
  Unit unit = Unit::kNone;
  std::uint32_t unitSize = 0;  // in bytes, of a data unit
};

// A self-test in a drive's own log.
struct SelfTest {
  std::string_view type;            // "short", "extended" and so on; empty: not known
  std::string status = {};          // how it ended, in the standard's words
  std::optional<bool> passed = {};  // nullopt: it did not come to an end
  std::optional<std::uint64_t> powerOnHours = {};  // when it ended
  std::optional<std::uint64_t> lba = {};           // the sector at which it failed

  bool operator==(const SelfTest&) const = default;
};

// An exception that a SCSI disk reports of its health.
struct Exception {
  std::uint8_t code = 0, qualifier = 0;  // both 0: there is none
  std::string words = {};                // the standard's
};

// How many sectors a drive has lost in one way, or how many errors of one kind it has met.
struct LossCount {
  std::uint8_t id = 0;    // of the attribute that counts them; 0: none does
  std::string_view name;  // sectors: "reallocated", "pending" or "uncorrectable"; errors:
                          // "uncorrectable", "end-to-end", "media" and the like
  bool ofSectors = true;
  std::optional<std::uint64_t> count = {};  // nullopt: the raw value is no clear count
  bool hasFallen = false;     // the value or the worst value differs from those of new drives
  std::string_view key = {};  // of the figure that counts them, where one does, and its group
  std::string_view group = {};
  std::uint64_t growth = 0;  // how many of them came within kGrowthDays
};

// The name of sectors that the drive has replaced.
inline constexpr std::string_view kReallocated = "reallocated";

// For so many days before its last answer a count is said to have grown.
inline constexpr std::chrono::days kGrowthDays{7};

// How much of its life a drive without moving parts has left.
struct LifeLeft {
  std::uint8_t id = 0;       // of the attribute that says so
  std::uint8_t percent = 0;  // of 100
};

// What a drive told at one time.
struct Moment {
  std::chrono::sys_seconds date = {};
  std::optional<int> temperature = {};     // in degrees Celsius
  std::optional<int> percentageUsed = {};  // of its life
  std::vector<LossCount> losses = {};
  std::optional<LossCount> crcErrors = {};
};

// What a recording knows of a drive that was read, and a report does not.
struct RecordedFacts {
  std::optional<int> temperature = {};       // in degrees Celsius; of an attribute, from 1 to 100
  std::string_view temperatureKey = {};      // of the figure that has it, if one has
  std::optional<int> temperatureLimit = {};  // the drive's own, from which on it is too hot
  std::vector<Figure> figures = {};          // of the drive's logs
  std::optional<Exception> exception = {};   // of a SCSI disk
  std::optional<int> percentageUsed = {};    // of the drive's life; may be above 100
  std::string_view percentageUsedKey = {};   // of the figure that has it
  std::optional<double> bytesRead = {};      // in all
  std::optional<double> bytesWritten = {};
  std::string whyNoLogs = {};               // why logs are missing that it should have; empty: none
  std::vector<SelfTest> selfTests = {};     // of the drive's log, the last one first
  std::vector<LossCount> losses = {};       // of the attributes that the drive has
  std::optional<LossCount> crcErrors = {};  // between drive and computer: nothing is lost by them
  std::vector<Moment> history = {};  // if there are earlier answers: the oldest first, and now last
  std::vector<LifeLeft> lifeLeft = {};  // of a drive that does not rotate, the least first
  std::optional<int> selfTest = {};     // status of the last one: 0 to 15, as the standard has it
  std::optional<std::uint32_t> powerOnHours = {};
  std::optional<std::uint32_t> powerCycles = {};
  std::optional<int> rotationRate = {};               // revolutions a minute; 0: nothing rotates
  std::string_view formFactor = {};                   // "3.5 inch"; empty: not known
  std::string_view linkSpeed = {};                    // "6.0 Gb/s"; likewise
  std::optional<std::int64_t> capacity = {};          // in bytes
  std::optional<std::chrono::sys_seconds> date = {};  // when it answered
  // How long ago that was, where another drive of the host answered a day later or more.
  std::optional<std::chrono::days> age = {};
  std::uint8_t temperatureId = 0;  // of the attribute that has the temperature; 0: none has
  std::optional<std::uint8_t> criticalWarning = {};  // of an NVMe drive, as the standard has it
  bool hasCondition = true;                          // false: the drive gave no verdict of its own
  bool hasExceptionPage = false;   // a log page has the exception; else sense data have
  bool hasBadSelfTestLog = false;  // the log of self-tests cannot be trusted
};

// A drive that was read. Any text may be empty, where it could not be found out, and padded with
// blanks.
struct Drive {
  std::string device;  // its path as the report has it
  std::string product;
  std::string revision;
  std::string capacity;  // a label with its unit, "232.89 GB"
  std::string serial;
  bool thresholdExceeded = false;  // false also where the drive gave no answer
  std::vector<Attribute> attributes;
  std::optional<RecordedFacts> recorded = {};
  std::string localPath = {};  // the path that exists on the host, where it is another; it begins
                               // with kLocalFolder
  Protocol protocol = Protocol::kATA;
};

// A drive that could not be read. Only a recording has its names, as far as they were known, and
// knows why.
struct UnreadDrive {
  std::string device = {}, product = {}, serial = {}, why = {}, localPath = {};
};

// Where a report cannot be read any further.
struct Damage {
  std::size_t line = 0;  // from 1
  std::string what;      // words of the reader's own, with nothing of the line in them
};

// What a recording knows of a host, and a report does not.
struct RecordedHost {
  // Disks that a report does not mention, by the names of their block devices.
  std::vector<std::string> withoutSMART = {};
  std::vector<std::string> notAsked = {};
  std::string name = {};                              // of the host
  std::optional<std::chrono::sys_seconds> date = {};  // when it was recorded
  // How long ago the last drive answered; where no drive has a date, how old the recording is.
  std::optional<std::chrono::seconds> newestAnswers = {};
  bool isDatedLater = false;  // a date lies more than a day after the time of reading
};

// The figure of that key and group. Null if there is none. Borrowed from the facts.
inline const Figure* FindFigure(const RecordedFacts& facts, std::string_view key,
                                std::string_view group = "") {
  for (const Figure& figure : facts.figures) {
    if (figure.key == key && figure.group == group) return &figure;
  }
  return nullptr;
}

// How many bytes the data units of that figure are. nullopt if there is none.
inline std::optional<double> BytesOf(const RecordedFacts& facts, std::string_view key) {
  const Figure* figure = FindFigure(facts, key);
  return figure ? std::optional(ToDouble(figure->value) * figure->unitSize) : std::nullopt;
}

// "sda" of "/dev/rsda", the path of a raw device; empty for another path.
inline std::string_view DiskOf(std::string_view device) {
  constexpr std::string_view kRawDevice = "/dev/r";
  return device.starts_with(kRawDevice) ? device.substr(kRawDevice.size()) : "";
}

inline constexpr std::string_view kLocalFolder = "/dev/";

// The name of the disk: of its path on the host, or else of that in the report.
template <typename AnyDrive>  // Drive or UnreadDrive
std::string_view DiskOf(const AnyDrive& drive) {
  const std::string_view path = drive.localPath;
  return path.empty() ? DiskOf(std::string_view(drive.device)) : path.substr(kLocalFolder.size());
}

// A drive that is no longer there.
struct GoneDrive {
  UnreadDrive names = {};           // and why it was not read the last time, if so
  std::optional<Drive> drive = {};  // what it said the last time, if it was read
  std::chrono::sys_seconds since = {};
};

struct Host {
  std::vector<Drive> drives = {};         // those that were read, in order
  std::vector<UnreadDrive> notRead = {};  // in order
  std::vector<GoneDrive> gone = {};       // of a recording
  std::optional<Damage> damage = {};      // of a report; then the rest is what came before it
  std::optional<RecordedHost> recorded = {};
};

}  // namespace drives
