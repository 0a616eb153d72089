// Fonts and images need a QGuiApplication; one lives for the whole test run, and the
// process-wide style set is destroyed before it goes, as the program does at shutdown.
#include <memory>

#include <QGuiApplication>
#include <gtest/gtest.h>

#include "map/catalogue/map_styles.h"

namespace {

class QtEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { app_ = std::make_unique<QGuiApplication>(argc_, argv_); }
  void TearDown() override {
    orvel::destroyMapStyles();
    app_.reset();
  }

 private:
  int argc_ = 1;
  char name_[24] = "test_map_catalogue";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> app_;
};

[[maybe_unused]] ::testing::Environment* const kQt =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace
