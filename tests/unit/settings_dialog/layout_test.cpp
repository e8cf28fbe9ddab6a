// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings_dialog/FrameThumbnail.h"
#include "tests/unit/settings_dialog/SettingsDialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QSet>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTranslator>

using namespace lumavex;

namespace {

/// A language with long words: every text is half as long again, and as hard to break.
class LongWords final : public QTranslator {
public:
    QString translate(const char*, const char* text, const char*, int) const override
    {
        const QString source = QString::fromUtf8(text);
        return source + QString(source.size() / 2, u'w');
    }
    bool isEmpty() const override { return false; }
};

/// True when all text of the page is legible: no label, button or tab is smaller than its text.
void expectReadable(const QWidget& page, const std::string& when)
{
    for (const QLabel* label : page.findChildren<QLabel*>()) {
        const int height = label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
        EXPECT_GE(label->height(), height) << when << ": " << label->text().toStdString();
        EXPECT_TRUE(label->wordWrap() || label->width() >= label->sizeHint().width())
            << when << ": " << label->text().toStdString();
        EXPECT_TRUE(page.rect().contains(QRect(label->mapTo(&page, QPoint()), label->size())))
            << when << ": " << label->text().toStdString();
    }
    for (const QAbstractButton* button : page.findChildren<QAbstractButton*>())
        EXPECT_TRUE(button->text().isEmpty() || button->width() >= button->sizeHint().width())
            << when << ": " << button->text().toStdString();
}

struct SettingsLayout : SettingsDialog {
    void walkThroughPages(const std::string& when)
    {
        auto& tabs = control<QTabWidget>("tabs");
        const auto* bar = tabs.findChild<QTabBar*>();
        EXPECT_LE(bar->sizeHint().width(), tabs.width()) << when << ": tabs are cut";
        for (int i = 0; i < tabs.count(); ++i) {
            tabs.setCurrentIndex(i);
            QApplication::processEvents();
            expectReadable(*tabs.currentWidget(), when);
        }
        expectReadable(control<QDialogButtonBox>("buttonBox"), when);
    }
};

TEST_F(SettingsLayout, EveryTextIsReadInLongLanguagesAndLargeFonts)
{
    choices.cameras.append(
        QStringLiteral("Integrated Camera with a Name That Its Maker Never Read Aloud (USB 04f2:b6d0)"));
    choices.soundInput = QStringLiteral("Monitor of Built-in Audio Analogue Stereo with a Rather Long Description");
    loaded.s_Camera_Name = choices.cameras.last();
    const QFont font = QApplication::font();
    QFont large = font;
    large.setPointSizeF(font.pointSizeF() * 1.5);
    LongWords translator;
    QApplication::installTranslator(&translator);
    for (const bool isLarge : {false, true}) {
        QApplication::setFont(isLarge ? large : font);
        open();
        QImage frame(288, 162, QImage::Format_RGB32);
        frame.fill(Qt::darkCyan);
        window->thumbnail().setPicture(frame);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        walkThroughPages(isLarge ? "large" : "usual");
        window.reset();
    }
    QApplication::removeTranslator(&translator);
    QApplication::setFont(font);
}

TEST_F(SettingsLayout, TheKeyboardAloneReachesEverything)
{
    loaded.s_Camera_Name = QStringLiteral("Desk");
    open();
    window->show();
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    auto& tabs = control<QTabWidget>("tabs");
    for (int page = 0; page < tabs.count(); ++page) {
        tabs.findChild<QTabBar*>()->setFocus();
        QSet<const QWidget*> reached;
        for (int i = 0; i < 60; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            reached.insert(QApplication::focusWidget());
            // The places of a frame are one stop; arrows lead from one to the next, and choose it.
            if (QApplication::focusWidget()->inherits("lumavex::PlaceButton"))
                for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Up, Qt::Key_Right, Qt::Key_Right,
                                          Qt::Key_Up, Qt::Key_Left, Qt::Key_Left}) {
                    reached.insert(QApplication::focusWidget());
                    QTest::keyClick(QApplication::focusWidget(), key);
                    reached.insert(QApplication::focusWidget());
                    EXPECT_TRUE(qobject_cast<QAbstractButton*>(QApplication::focusWidget())->isChecked());
                }
        }
        for (const QWidget* control : tabs.currentWidget()->findChildren<QWidget*>()) {
            const bool works = qobject_cast<const QAbstractButton*>(control) || qobject_cast<const QComboBox*>(control)
                               || qobject_cast<const QSlider*>(control);
            EXPECT_TRUE(!works || !control->isVisible() || !control->isEnabled() || reached.contains(control))
                << control->objectName().toStdString();
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
        EXPECT_EQ(tabs.currentIndex(), (page + 1) % tabs.count());
    }
}

} // namespace
