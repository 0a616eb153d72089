#pragma once
// Command ids of the menu bar (menu 101) and the pop-up menus (111 map, 125 gauges).
namespace orvel {

inline constexpr int kCmdZoomIn = 40001;       // "Увеличить"
inline constexpr int kCmdZoomOut = 40002;      // "Уменьшить"
inline constexpr int kCmdAbout = 40003;        // "О программе"
inline constexpr int kCmdRecompose = 40004;
inline constexpr int kCmdPanRight = 40005;
inline constexpr int kCmdPanLeft = 40006;
inline constexpr int kCmdPanDown = 40007;
inline constexpr int kCmdPanUp = 40008;
inline constexpr int kCmdExit = 40009;         // "Выход"
inline constexpr int kCmdOptions = 40010;      // "Настройки"
inline constexpr int kCmdSavePoint = 40011;    // "Сохранить точку..." (screen centre)
inline constexpr int kCmdGoTo = 40014;         // "Go to..." (greyed)
inline constexpr int kCmdCancel = 40015;       // "Отменить"
inline constexpr int kCmdChooseGauge = 40016;  // "Выбрать датчик..." (the held cell)
inline constexpr int kCmdResetGauges = 40017;  // "Изначальный набор"
inline constexpr int kCmdSavePointHere = 40019;  // "Сохранить точку..." (tapped point)
inline constexpr int kCmdOpenTrack = 40020;    // "Открыть трек..." (a GPX file over the map)
inline constexpr int kCmdCloseTrack = 40021;   // "Закрыть трек"
inline constexpr int kCmdOpen = 57601;         // "&Открыть...\tCtrl+O"
inline constexpr int kCmdFirstPage = 2000;     // 2000..2009 select a page
inline constexpr int kCmdLastPage = 2009;

inline constexpr int kMenuBar = 101;
inline constexpr int kMenuMapPopup = 111;
inline constexpr int kMenuGaugesPopup = 125;

}  // namespace orvel
