#include "shell/ui/help_viewer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpIndexWidget>
#include <QHelpLink>
#include <QHelpSearchEngine>
#include <QHelpSearchQueryWidget>
#include <QHelpSearchResultWidget>
#include <QLineEdit>
#include <QSplitter>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <algorithm>

namespace ampdesk {

namespace {

// A browser whose pages and pictures come out of the help collection.
class HelpBrowser : public QTextBrowser {
  public:
    HelpBrowser(QHelpEngine& engine, QWidget* parent) : QTextBrowser(parent), engine_(engine) {
        setViewportMargins(14, 8, 14, 8);
    }

  protected:
    QVariant loadResource(int /*type*/, const QUrl& name) override {
        const QUrl url = name.isRelative() ? source().resolved(name) : name;
        return url.scheme() == u"qthelp" ? QVariant(engine_.fileData(url)) : QVariant();
    }

  private:
    QHelpEngine& engine_;
};

// The two files of the first folder that has both, else those of the last. The name is also known in
// another spelling.
QStringList manual_in(const QStringList& folders) {
    QStringList files;
    for (const QString& folder : folders) {
        const QDir from(folder);
        files.clear();
        for (const QString& suffix : {QStringLiteral("hlp"), QStringLiteral("qch")}) {
            const QString usual = from.filePath(QStringLiteral("ampdesk.") + suffix);
            const QString other = from.filePath(QStringLiteral("ampdesk.") + suffix.toUpper());
            files << (!QFile::exists(usual) && QFile::exists(other) ? other : usual);
        }
        if (std::all_of(files.begin(), files.end(), [](const QString& file) { return QFile::exists(file); }))
            break;
    }
    return files;
}

QUrl first_page(QHelpEngine& engine) {
    const QList<QUrl> pages =
        engine.files(QStringLiteral("ampdesk.manual"), QString(), QStringLiteral("html"));
    return pages.isEmpty() ? QUrl() : *std::min_element(pages.begin(), pages.end());
}

}  // namespace

HelpViewer::HelpViewer(const QStringList& folders, QWidget* parent)
    : QMainWindow(parent), copy_(std::make_unique<QTemporaryDir>()) {
    setWindowTitle(QStringLiteral("JEX Remote Control - Help"));
    for (const QString& file : manual_in(folders)) {
        if (QFile::copy(file, copy_->filePath(QFileInfo(file).fileName().toLower())))
            continue;
        failure_ = file + QStringLiteral(" cannot be read");
        return;
    }
    engine_ = std::make_unique<QHelpEngine>(copy_->filePath(QStringLiteral("ampdesk.hlp")));
    engine_->setUsesFilterEngine(true);
    if (!engine_->setupData()) {
        failure_ = engine_->error();
        return;
    }
    build();
}

HelpViewer::~HelpViewer() = default;

void HelpViewer::build() {
    browser_ = new HelpBrowser(*engine_, this);
    browser_->setAccessibleName(QStringLiteral("Page"));
    tabs_ = new QTabWidget(this);
    tabs_->setAccessibleName(QStringLiteral("Help"));

    auto* contents = engine_->contentWidget();
    contents->setAccessibleName(QStringLiteral("Contents"));
    connect(contents, &QHelpContentWidget::linkActivated, this, &HelpViewer::open_page);
    connect(contents, &QHelpContentWidget::clicked, this, [this](const QModelIndex& clicked) {
        if (const auto* item = engine_->contentModel()->contentItemAt(clicked); item != nullptr)
            open_page(item->url());
    });
    connect(engine_->contentModel(), &QHelpContentModel::contentsCreated, contents, &QTreeView::expandAll);
    tabs_->addTab(contents, QStringLiteral("Contents"));

    auto* index_page = new QWidget(this);
    auto* index_layout = new QVBoxLayout(index_page);
    auto* filter = new QLineEdit(index_page);
    filter->setAccessibleName(QStringLiteral("Look for"));
    filter->setPlaceholderText(QStringLiteral("Look for"));
    auto* index = engine_->indexWidget();
    index->setAccessibleName(QStringLiteral("Index"));
    connect(filter, &QLineEdit::textChanged, index,
            [index](const QString& text) { index->filterIndices(text, text); });
    connect(filter, &QLineEdit::returnPressed, index, &QHelpIndexWidget::activateCurrentItem);
    connect(index, &QHelpIndexWidget::documentActivated, this,
            [this](const QHelpLink& document) { open_page(document.url); });
    connect(index, &QHelpIndexWidget::documentsActivated, this, [this](const QList<QHelpLink>& documents) {
        if (!documents.isEmpty())
            open_page(documents.first().url);
    });
    index_layout->addWidget(filter);
    index_layout->addWidget(index);
    tabs_->addTab(index_page, QStringLiteral("Index"));

    auto* search = engine_->searchEngine();
    auto* search_page = new QWidget(this);
    auto* search_layout = new QVBoxLayout(search_page);
    search_layout->addWidget(search->queryWidget());
    search_layout->addWidget(search->resultWidget(), 1);
    connect(search->queryWidget(), &QHelpSearchQueryWidget::search, this,
            [search] { search->search(search->queryWidget()->searchInput()); });
    connect(search->resultWidget(), &QHelpSearchResultWidget::requestShowLink, this, &HelpViewer::open_page);
    search->reindexDocumentation();
    tabs_->addTab(search_page, QStringLiteral("Search"));

    auto* splitter = new QSplitter(this);
    splitter->addWidget(tabs_);
    splitter->addWidget(browser_);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({300, 640});
    setCentralWidget(splitter);
    resize(960, 640);
    open_page(first_page(*engine_));
}

void HelpViewer::open_page(const QUrl& url) {
    if (browser_ != nullptr && url.isValid())
        browser_->setSource(url);
}

void HelpViewer::show_page(Page page) {
    if (tabs_ != nullptr)
        tabs_->setCurrentIndex(static_cast<int>(page));
    show();
    raise();
    activateWindow();
}

}  // namespace ampdesk
