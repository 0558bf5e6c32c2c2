#include "RecordingTexts.h"

#include <QDir>

using namespace Qt::StringLiterals;

QString RecordingTexts::preparing()
{
    return u"Hazırlanıyor…"_s;
}

QString RecordingTexts::countdown(int secondsLeft)
{
    return QString::number(secondsLeft) + u"…"_s;
}

QString RecordingTexts::completing()
{
    return u"Kayıt tamamlanıyor…"_s;
}

QString RecordingTexts::ending()
{
    return u"Kayıt sonlandırılıyor…"_s;
}

QString RecordingTexts::saving()
{
    return u"Video kaydediliyor…"_s;
}

QString RecordingTexts::noMicrophone()
{
    return u"Kullanılabilir mikrofon bulunamadı."_s;
}

QString RecordingTexts::displayGone()
{
    return u"Seçilen ekran artık bağlı değil."_s;
}

QString RecordingTexts::windowGone()
{
    return u"Seçilen pencere kapatılmış veya görünür değil."_s;
}

QString RecordingTexts::regionInvalid()
{
    return u"Seçilen alan geçersiz; alanı tekrar seç."_s;
}

QString RecordingTexts::folderNotWritable(const QString& folder)
{
    return u"Kayıt dosyası bu klasörde oluşturulamadı:\n"_s + QDir::toNativeSeparators(folder);
}

QString RecordingTexts::captureFailed()
{
    return u"Ekran kaydı başlatılamadı."_s;
}

QString RecordingTexts::sourceEnded()
{
    return u"Masaüstü ekran paylaşımını sonlandırdı."_s;
}

QString RecordingTexts::stopFailed()
{
    return u"Kayıt durdurulamadı."_s;
}

QString RecordingTexts::locationMissing()
{
    return u"Kayıt dosyasının konumu bulunamadı."_s;
}

QString RecordingTexts::noVideo()
{
    return u"Geçerli video oluşmadı; kayıt çok kısa olabilir."_s;
}

QString RecordingTexts::videoMergeFailed()
{
    return u"Video birleştirilemedi."_s;
}

QString RecordingTexts::audioMergeFailed()
{
    return u"Ses birleştirilemedi."_s;
}

QString RecordingTexts::exportUnavailable()
{
    return u"MP4 dışa aktarılamadı."_s;
}

QString RecordingTexts::mixFailed()
{
    return u"Sesler birleştirilemedi. Orijinal kayıt kurtarma dosyasında korunacak."_s;
}

QString RecordingTexts::withRecovery(const QString& message, const QString& recoveryPath)
{
    return message + u"\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n"_s
        + QDir::toNativeSeparators(recoveryPath);
}

QString RecordingTexts::withStagingKept(const QString& moveMessage, const QString& stagingPath)
{
    return moveMessage + u"\nGeçici kayıt burada korundu:\n"_s + QDir::toNativeSeparators(stagingPath);
}

QString RecordingTexts::cutShort(const QString& failureMessage, const QString& destinationPath)
{
    return u"Kayıt kesildi: "_s + failureMessage + u"\nTamamlanabilen video burada saklandı:\n"_s
        + QDir::toNativeSeparators(destinationPath);
}
