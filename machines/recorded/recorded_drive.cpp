#include "machines/recorded/recorded_drive.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "machines/recorded/keys.h"
#include "machines/recorded/recording_error.h"
#include "machines/recorded/typed_value.h"

namespace machines {
namespace {

using platform::Data;
using platform::KeyedProperty;

// What was not recorded has no value. Data stay as short as they are in the file,
// which may hold many drives.
struct Answers {
  std::optional<Data> data;
  std::optional<Data> thresholds;
  std::optional<Data> identify;
  std::optional<bool> thresholdExceeded;
  bool enableFails = false;
  bool queryFails = false;
};

class RecordedDrive : public platform::Drive {
 public:
  explicit RecordedDrive(Answers answers) : answers_(std::move(answers)) {}

  bool Open() override { return !answers_.queryFails; }
  bool Enable(bool) override { return !answers_.enableFails; }
  std::optional<bool> ReturnStatus() override { return answers_.thresholdExceeded; }
  std::optional<Block> ReadData() override { return Filled(answers_.data); }
  std::optional<Block> ReadThresholds() override { return Filled(answers_.thresholds); }
  std::optional<Block> Identify() override { return Filled(answers_.identify); }

 private:
  static std::optional<Block> Filled(const std::optional<Data>& recorded) {
    if (!recorded) return std::nullopt;
    Block block{};
    std::ranges::copy(*recorded, block.begin());
    return block;
  }

  Answers answers_;
};

Data TakeBlock(KeyedProperty& recorded) {
  constexpr std::size_t kLongest = std::tuple_size_v<platform::Drive::Block>;
  Data& bytes = TypedValue<Data>(recorded);
  if (bytes.size() > kLongest) {
    throw RecordingError(recorded.key + " is longer than " + std::to_string(kLongest) + " bytes");
  }
  return std::move(bytes);
}

void Take(KeyedProperty& recorded, Answers& answers) {
  const std::string& key = recorded.key;
  if (key == kDataKey) {
    answers.data = TakeBlock(recorded);
  } else if (key == kThresholdsKey) {
    answers.thresholds = TakeBlock(recorded);
  } else if (key == kIdentifyKey) {
    answers.identify = TakeBlock(recorded);
  } else if (key == kExceededKey) {
    answers.thresholdExceeded = TypedValue<bool>(recorded);
  } else if (key == kEnableFailsKey) {
    answers.enableFails = TypedValue<bool>(recorded);
  } else if (key == kQueryFailsKey) {
    answers.queryFails = TypedValue<bool>(recorded);
  } else {
    throw RecordingError("unknown key " + Shortened(key));
  }
}

}  // namespace

std::shared_ptr<platform::Drive> MakeRecordedDrive(platform::Dictionary& recorded) {
  Answers answers;
  for (KeyedProperty& keyed : recorded) {
    try {
      Take(keyed, answers);
    } catch (const RecordingError& error) {
      throw RecordingError(std::string("RecordedDrive: ") + error.what());
    }
  }
  return std::make_shared<RecordedDrive>(std::move(answers));
}

}  // namespace machines
