// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/IniUserDefaults.h"

#include <QCoreApplication>
#include <QFile>
#include <QList>
#include <QRegularExpression>
#include <QStandardPaths>

namespace lumavex {

namespace {

/// QSettings judges a section only once it is read, and the lines before the first section never.
bool isIniText(const QByteArray& text)
{
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray& each : lines) {
        const QByteArray line = each.trimmed();
        const bool remark = line.isEmpty() || line.startsWith(';') || line.startsWith('#');
        const bool section = line.startsWith('[') && line.endsWith(']');
        if (!remark && !section && !line.contains('='))
            return false;
    }
    return !text.contains('\0');
}

} // namespace

QString userDefaultsPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/lumavex/lumavex.ini");
}

IniUserDefaults::IniUserDefaults(const QString& path)
    : path_(path), settings_(std::make_unique<QSettings>(path, QSettings::IniFormat))
{
    QFile file(path_);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        trouble_ = QCoreApplication::translate("UserDefaults",
                                               "The settings file %1 cannot be read. Default settings are used.")
                       .arg(path_);
    } else if (!isIniText(file.readAll()) || settings_->status() == QSettings::FormatError) {
        salvage();
    }
}

void IniUserDefaults::salvage()
{
    const QString damaged = path_ + QStringLiteral(".damaged");
    settings_.reset();
    QFile::remove(damaged);
    if (!QFile::rename(path_, damaged)) {
        trouble_ =
            QCoreApplication::translate("UserDefaults", "The settings file %1 is damaged and cannot be replaced.")
                .arg(path_);
        settings_ = std::make_unique<QSettings>(path_, QSettings::IniFormat);
        return;
    }
    trouble_ = QCoreApplication::translate(
                   "UserDefaults", "The settings file was damaged. What could be read of it is used; please check "
                                   "the settings. The damaged file was kept as %1.")
                   .arg(damaged);

    settings_ = std::make_unique<QSettings>(path_, QSettings::IniFormat);
    QFile file(damaged);
    if (!file.open(QIODevice::ReadOnly))
        return;
    static const QRegularExpression line(QStringLiteral("^(\\w+)=\"?([^\"\\r\\n]*)\"?\\r?$"),
                                         QRegularExpression::MultilineOption);
    auto matches = line.globalMatch(QString::fromUtf8(file.readAll()));
    while (matches.hasNext()) {
        const auto match = matches.next();
        settings_->setValue(match.captured(1), match.captured(2));
    }
    settings_->sync();
}

std::optional<QString> IniUserDefaults::stringForKey(const QString& key) const
{
    const QVariant value = settings_->value(key);
    // A text with commas in a file edited by hand reads as a list.
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(QStringLiteral(", "));
    return value.isValid() ? std::optional(value.toString()) : std::nullopt;
}

void IniUserDefaults::setObject_forKey(const QString& text, const QString& key)
{
    settings_->setValue(key, text);
    settings_->sync();
    if (settings_->status() == QSettings::AccessError)
        trouble_ = QCoreApplication::translate("UserDefaults", "The settings cannot be saved in %1.").arg(path_);
}

} // namespace lumavex
