// The manual in a window of its own: contents, index and search beside the page.
#pragma once

#include <QMainWindow>
#include <QStringList>
#include <memory>

class QHelpEngine;
class QTabWidget;
class QTemporaryDir;
class QTextBrowser;
class QUrl;

namespace ampdesk {

class HelpViewer : public QMainWindow {
    Q_OBJECT

  public:
    enum class Page { contents, index, search };

    // Opens "ampdesk.hlp" of the first of the folders, of which there is one at least, that has its
    // companion "ampdesk.qch", too. The files are copied to a temporary folder first, because the search
    // keeps its index beside them and the program's folder may not be written to.
    explicit HelpViewer(const QStringList& folders, QWidget* parent = nullptr);
    ~HelpViewer() override;

    // Empty when the manual opened, else one line for the operator.
    const QString& failure() const { return failure_; }

    void show_page(Page page);

  private:
    void build();
    void open_page(const QUrl& url);

    std::unique_ptr<QTemporaryDir> copy_;
    std::unique_ptr<QHelpEngine> engine_;
    QString failure_;
    QTabWidget* tabs_ = nullptr;
    QTextBrowser* browser_ = nullptr;
};

}  // namespace ampdesk
