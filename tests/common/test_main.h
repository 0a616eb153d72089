#pragma once
// What every test program sets up around its tests.

namespace orvel::test {

// Runs the tests with what they share for the whole run, owned here: the application that
// fonts, painting and widgets need (on the offscreen platform unless QT_QPA_PLATFORM says
// otherwise), and the scratch folder below the system's temporary folder, removed at the end
// with the folders that killed test programs left behind.
int runTests(int argc, char** argv);

}  // namespace orvel::test
