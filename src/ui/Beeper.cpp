#include "Beeper.h"

#include <QApplication>
#include <atomic>

namespace {
std::atomic<int> g_beeps { 0 };
}

void Beeper::beep()
{
    ++g_beeps;
    QApplication::beep();
}

int Beeper::count()
{
    return g_beeps.load();
}
