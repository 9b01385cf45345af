#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <functional>

#include "desktop/qt/look.h"

/// What the desktop tells and takes by the session bus, if there is one.
namespace vento::desktop::qt {

/// The progress of an operation on the program's icon, where the desktop has a place for it.
class Launcher {
  public:
    /// `part` of the whole is done. Only whole percents are news.
    void ShowProgress(float part);

    /// The operation is over; `urgent` if the operator should come and look.
    void HideProgress(bool urgent);

  private:
    int percent_ = -1;
};

/// How much contrast the desktop asks for, from its settings portal, or from the name of its theme.
class ContrastWatch : public QObject {
    Q_OBJECT

  public:
    /// `changed` is called in the event loop when the desktop has answered, and whenever that changes.
    explicit ContrastWatch(std::function<void(Contrast)> changed);

    [[nodiscard]] Contrast Current() const;

  private:
    Q_SLOT void Ask(const QString& space, const QString& key);
    void Take(const QString& space, const QString& key, const QDBusVariant& value);

    std::function<void(Contrast)> changed_;
    QString theme_;
    bool appearance_ = false;    ///< the portal's own setting
    bool highContrast_ = false;  ///< GNOME's
    bool dark_ = false;
};

}  // namespace vento::desktop::qt
