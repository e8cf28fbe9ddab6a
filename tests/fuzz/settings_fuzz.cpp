// SPDX-License-Identifier: GPL-3.0-or-later
// The preferences file.
#include "app/SettingsTable.h"
#include "platform/qt/IniUserDefaults.h"
#include "tests/fuzz/Fuzzing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace lumavex;

namespace {

/// In memory where the system has such a folder: settings are flushed to the disk at every write.
QString folderTemplate()
{
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/lumavex-fuzz-XXXXXX");
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QTemporaryDir folder(folderTemplate());
    static int number = 0; // the text of a path may be remembered
    const QByteArray bytes = Input(data, size).restAsText();
    const QString path = folder.filePath(QStringLiteral("%1.ini").arg(++number));
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "there is a folder to write to");
    file.close();

    const QString rate = settingKey("i_Screen_Capture_FPS");
    const QString camera = settingKey("s_Camera_Name");
    QString name;
    {
        IniUserDefaults defaults(path);
        require(!defaults.trouble().isEmpty() || contentOf(path) == bytes, "a file that is in order stays as it is");
        require(defaults.trouble().isEmpty() || contentOf(path + QStringLiteral(".damaged")) == bytes,
                "a damaged file is kept");
        readInteger(defaults, "i_Screen_Capture_FPS", ReadRule::Defaulting);
        require(!defaults.stringForKey(rate).value_or(QString()).isEmpty(), "a default is stored");
        name = defaults.stringForKey(camera).value_or(QString());
        defaults.setObject_forKey(name, camera);
        require(defaults.stringForKey(camera) == name, "what was written is read");
    }
    require(IniUserDefaults(path).stringForKey(camera) == name, "what was written is read by the next run");
    QFile::remove(path);
    QFile::remove(path + QStringLiteral(".damaged"));
    return 0;
}
