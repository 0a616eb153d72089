#include "track/ui/waypoint_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/message.h"
#include "geo/coords.h"
#include "geo/units.h"

namespace orvel {

namespace {

QString toQString(const std::u16string& text) { return QString::fromStdU16String(text); }

std::u16string fieldText(const QLineEdit* edit) {
  return edit->text().left(kWaypointFieldLength).toStdU16String();
}

// Reads a coordinate; false (and `degrees` untouched) when the text holds none.
bool readCoordinate(const std::u16string& text, float& degrees) {
  const char16_t* after = nullptr;
  float value = 0.0f;
  if (!parseCoordinate(text.data(), text.data() + text.size(), &after, &value)) return false;
  degrees = value;
  return true;
}

bool readNumber(const std::u16string& text, float& number) {
  const char16_t* after = nullptr;
  float value = 0.0f;
  if (!parseDecimal(text.data(), text.data() + text.size(), &after, &value)) return false;
  number = value;
  return true;
}

}  // namespace

std::u16string LengthFormat::formatLength(float value, bool givenInMetres, bool whole) const {
  float v = value;
  const int unit = unit_;
  if (unit == kUnitFeet && givenInMetres) v = v * kFeetPerMetre;
  if (unit == kUnitMetres && !givenInMetres) v = v / kFeetPerMetre;
  std::u16string text;
  if (v < 0.0f) {
    text += u'-';
    v = -v;
  }
  auto appendNumber = [&text](int32_t n) {
    for (char c : std::to_string(n)) text += static_cast<char16_t>(c);
  };
  if (whole) {
    appendNumber(floorToInt(v + 0.5f));
    return text;
  }
  // The 0.05 carries 12.96 to 13.0 rather than to 12.10.
  const int32_t units = floorToInt(v + 0.05f);
  const int32_t tenths = floorToInt((v - static_cast<float>(units)) * 10.0f + 0.5f);
  appendNumber(units);
  text += u'.';
  appendNumber(tenths);
  return text;
}

WaypointEditDialog::WaypointEditDialog(Waypoint& waypoint, const LengthFormat& lengths, Messages& messages,
                                       QWidget* parent)
    : QDialog(parent), waypoint_(waypoint) {
  setObjectName(QStringLiteral("109"));
  setWindowTitle(QStringLiteral("Путевая точка"));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  layout->addLayout(form);
  setLayout(layout);

  auto add = [this, form](int id, const QString& label) {
    auto* edit = new QLineEdit(this);
    edit->setObjectName(QString::number(id));
    edit->setMaxLength(kWaypointFieldLength);
    form->addRow(label, edit);
    return edit;
  };
  // The position shown is the stored one rounded to whole map units.
  add(kWaypointLatitudeId, QStringLiteral("Широта"))
      ->setText(toQString(formatLatitude(mapUnitsToDegrees(waypoint.lat >> 8))));
  add(kWaypointLongitudeId, QStringLiteral("Долгота"))
      ->setText(toQString(formatLongitude(mapUnitsToDegrees(waypoint.lon >> 8))));
  add(kWaypointNameId, QStringLiteral("Название"))
      ->setText(toQString(std::u16string(waypoint.name())));
  add(kWaypointAltitudeId, QStringLiteral("Высота"))
      ->setText(toQString(lengths.formatLength(waypoint.altitude, true, false)));
  const std::u16string& comment = waypoint.strings[kWaypointComment];
  add(kWaypointCommentId, QStringLiteral("Комментарий"))
      ->setText(toQString(comment.substr(0, comment.find(u'\0'))));

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto addCommand = [this, buttons, &messages](int id, const QString& text) {
    QPushButton* button = buttons->addButton(text, QDialogButtonBox::ActionRole);
    button->setObjectName(QString::number(id));
    connect(button, &QPushButton::clicked, this,
            [&messages] { showMessage(messages, "Sorry, the feature is not implemented"); });
  };
  addCommand(kWaypointSymbolCommand, QStringLiteral("Значок..."));
  addCommand(kWaypointShowCommand, QStringLiteral("На карте"));
  connect(buttons, &QDialogButtonBox::accepted, this, &WaypointEditDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &WaypointEditDialog::reject);
  layout->addWidget(buttons);
}

QLineEdit* WaypointEditDialog::field(int controlId) const {
  return findChild<QLineEdit*>(QString::number(controlId));
}

void WaypointEditDialog::accept() {
  float latitude = 0.0f;
  if (readCoordinate(fieldText(field(kWaypointLatitudeId)), latitude)) {
    waypoint_.lat = degreesToSemicircles(latitude);
  }
  float longitude = 0.0f;
  if (readCoordinate(fieldText(field(kWaypointLongitudeId)), longitude)) {
    waypoint_.lon = degreesToSemicircles(longitude);
  }
  // Stored as typed: the number is not converted back from the shown unit.
  float altitude = 0.0f;
  if (readNumber(fieldText(field(kWaypointAltitudeId)), altitude)) waypoint_.altitude = altitude;
  setWaypointString(waypoint_, kWaypointName, fieldText(field(kWaypointNameId)));
  setWaypointString(waypoint_, kWaypointComment, fieldText(field(kWaypointCommentId)));
  QDialog::accept();
}

bool editWaypoint(Waypoint& waypoint, const LengthFormat& lengths, Messages& messages, QWidget* owner,
                  const DialogRun& run) {
  WaypointEditDialog dialog(waypoint, lengths, messages, owner);
  const int result = run ? run(dialog) : dialog.exec();
  return result == QDialog::Accepted;
}

}  // namespace orvel
