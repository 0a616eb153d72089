// Fonts and images need a QGuiApplication; one lives for the whole test run with the one
// style set the tests read, which goes before the application does, as in the program.
#include <memory>

#include <QGuiApplication>
#include <gtest/gtest.h>

#include "map/catalogue/map_styles.h"

namespace {

class QtEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    app_ = std::make_unique<QGuiApplication>(argc_, argv_);
    styles_ = std::make_unique<orvel::MapStyles>();
  }
  void TearDown() override {
    styles_.reset();
    app_.reset();
  }
  const orvel::MapStyles& styles() const { return *styles_; }

 private:
  int argc_ = 1;
  char name_[24] = "test_map_catalogue";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> app_;
  std::unique_ptr<orvel::MapStyles> styles_;
};

QtEnvironment* const kQt = static_cast<QtEnvironment*>(::testing::AddGlobalTestEnvironment(new QtEnvironment));

}  // namespace

namespace orvel {
const MapStyles& mapStyles() { return kQt->styles(); }
}  // namespace orvel
