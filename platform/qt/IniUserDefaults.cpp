// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/IniUserDefaults.h"

#include "platform/PlatformText.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace lumavex {

namespace {

/// A hundred times the size that the program ever writes.
constexpr qint64 kMostBytes = 1 << 20;

} // namespace

QString userDefaultsPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/lumavex/lumavex.ini");
}

QString moreSettingsPath()
{
    return QFileInfo(userDefaultsPath()).dir().filePath(QStringLiteral("more.ini"));
}

IniUserDefaults::IniUserDefaults(const QString& path, Holds what) : path_(path), what_(what)
{
    QFile file(path_);
    if (!file.exists())
        return;
    if (!QFileInfo(path_).isFile() || !file.open(QIODevice::ReadOnly)) {
        isUnread_ = true;
        trouble_ = what_ == Holds::Choices
                       ? unreadChoices()
                       : PlatformText::tr("The settings file %1 cannot be read, so most settings are 0 or "
                                          "off now: no sound is recorded, for example. Please check the "
                                          "settings.")
                             .arg(path_);
        return;
    }
    IniText ini = readIni(file.read(kMostBytes));
    values_ = std::move(ini.values);
    if (!ini.damaged && file.atEnd())
        return;
    if (what_ == Holds::Choices) {
        isUnread_ = true;
        trouble_ = unreadChoices();
    } else {
        keepDamaged();
    }
}

QString IniUserDefaults::unreadChoices() const
{
    return PlatformText::tr("The file %1, which holds choices made in messages, cannot be read in full. "
                            "What is missing counts as not chosen; the file stays as it is until you "
                            "choose again.")
        .arg(path_);
}

QString IniUserDefaults::pathAside() const
{
    return path_ + QStringLiteral(".damaged");
}

bool IniUserDefaults::putAside() const
{
    QFile::remove(pathAside());
    return QFile::rename(path_, pathAside());
}

void IniUserDefaults::keepDamaged()
{
    if (!putAside()) {
        trouble_ = PlatformText::tr("The settings file %1 is damaged and cannot be replaced.").arg(path_);
        return;
    }
    trouble_ = PlatformText::tr("The settings file was damaged. What could be read of it is used; please check "
                                "the settings. The damaged file was kept as %1.")
                   .arg(pathAside());
    save();
}

QString IniUserDefaults::save() const
{
    QDir().mkpath(QFileInfo(path_).absolutePath());
    QSaveFile file(path_);
    const bool saved = file.open(QIODevice::WriteOnly) && file.write(writeIni(values_)) >= 0 && file.commit();
    return saved ? QString() : file.errorString();
}

std::optional<QString> IniUserDefaults::stringForKey(const QString& key) const
{
    const auto it = values_.constFind(key);
    return it != values_.constEnd() ? std::optional(*it) : std::nullopt;
}

void IniUserDefaults::setObject_forKey(const QString& text, const QString& key)
{
    values_.insert(key, text);
    if (isUnread_) {
        if (!putAside()) {
            writeTrouble_ = PlatformText::tr("The settings file %1 cannot be replaced. Settings hold until "
                                             "Lumavex is closed.")
                                .arg(path_);
            return;
        }
        isUnread_ = false;
        if (what_ == Holds::Choices)
            trouble_.clear();
        else
            trouble_ += u' ' + PlatformText::tr("The file was kept as %1.").arg(pathAside());
    }
    const QString why = save();
    writeTrouble_ = why.isEmpty() ? QString()
                                  : PlatformText::tr("The settings cannot be saved in %1 (%2). They "
                                                     "hold until Lumavex is closed.")
                                        .arg(path_, why);
}

} // namespace lumavex
