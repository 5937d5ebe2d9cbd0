#include "core/localized_strings.h"

namespace nuvrel::core {

const LocalizedStrings& LocalizedStrings::ja() {
    static const LocalizedStrings value{
        .placeholder = "Nuvrelに聞く",
        .thinkingLabel = "Kestruneがリクエストを理解しています…",
        .settingsTitle = "Nuvrelの設定",
        .appearanceLabel = "外観",
        .appearanceHint = "ライトまたはダークのインターフェイス",
        .languageLabel = "言語",
        .languageHint = "インターフェイスの言語",
        .hotkeyLabel = "キーボードショートカット",
        .hotkeyHint = "どこからでもNuvrelを呼び出せます",
        .networkFeaturesLabel = "ネットワーク機能",
        .networkFeaturesHint =
            "デバイス上のLLM推論がMacの外に出ることはありません。ネットワークを使うのはWeb検索、天"
            "気、通貨換算だけです。オフにすると、すべてのクエリを完全にオフラインで処理します。（モ"
            "デルのインストール時は引き続きインターネットからダウンロードします。）",
        .memorySavingModeLabel = "メモリ節約モード",
        .memorySavingModeHint =
            "使用していないときは要約モデルを解放してメモリを空けます。次の要約は開始までに1秒ほど"
            "長くかかる場合があります。",
        .modelUpdateCheckLabel = "新しいAIモデルを確認",
        .modelUpdateCheckHint =
            "改良されたデバイス上のモデルがないか、1日に1回程度確認します。取得するのは小さなマニフ"
            "ェストファイルだけで、モデル本体はダウンロードを選んだときにのみダウンロードされます"
            "。",
        .modelUpdateAvailableTemplate = "新しいAIモデルを利用できます：%@",
        .modelUpdateUpToDateMessage = "AIモデルは最新です。",
        .modelUpdateNeedsAppUpdateMessage =
            "新しいAIモデルを利用できますが、新しいバージョンのNuvrelが必要です。先にアプリをアッ"
            "プデートしてください。",
        .modelUpdateCheckNowLabel = "今すぐ確認",
        .toggleOnLabel = "オン",
        .toggleOffLabel = "オフ",
        .modelLabel = "ローカルモデル",
        .modelHint = "デバイス上でのみ実行",
        .settingsLabel = "設定",
        .lightThemeLabel = "ライト",
        .darkThemeLabel = "ダーク",
        .sugg =
            {
                "東京の天気",
                "5分のタイマーをセットして",
                "12 * 7",
                "100ドルは何円？",
                "15時に母に電話するってリマインドして",
                "おはようを英語に翻訳して",
                "左半分",
                "スクリーンショット",
            },
        .llmUnavailableMessage = "ローカルモデルに接続できませんでした",
        .llmUnavailableRecovery =
            "Kestrune-nanoがインストールされていることを確認してから、もう一度お試しください。",
        .inputTooLongMessage = "デバイス上のモデルで処理するにはテキストが長すぎます",
        .inputTooLongRecovery =
            "もっと短いクエリでもう一度お試しください。モデルが一度に読み取れる量には限りがあります"
            "。",
        .llmUnavailableDownloadingTemplate =
            "モデルをダウンロード中です（%@%）。完了すると自動的に使えるようになります。",
        .modelDownloadingLabel = "モデルを準備中",
        .networkFeaturesOfflineMessage = "ネットワーク機能がオフになっています",
        .networkFeaturesOfflineRecovery =
            "Web検索、天気、通貨換算を使うには、「設定」＞「一般」で「ネットワーク機能」をオンにし"
            "てください。",
        .missingSlotTemplate = "必要な情報が足りません：%@",
        .capabilityUnavailableMessage = "その操作はまだ利用できません",
        .webAnswerHeaderTitle = "Webの回答",
        .webAnswerSummarizedBy = "デバイス上で要約",
        .webAnswerSummarizedByTemplate = "%@による要約",
        .webAnswerSourcesLabel = "出典",
        .webAnswerExtractiveSourceLabel = "最上位の検索結果からの抜粋",
        .webAnswerOpenInBrowser = "ブラウザで開く",
        .webAnswerFallbackNotice =
            "Nuvrelは操作として認識できなかったため、代わりにWebを検索しました。",
        .webSearchNetworkFailureMessage = "インターネット接続を確認してください",
        .webSearchNetworkFailureRecovery = "しばらくしてからもう一度検索してください。",
        .webSearchBlockedMessage = "検索サービスが一時的にリクエストを制限しています",
        .webSearchBlockedRecovery = "しばらくしてからもう一度お試しください。",
        .finderHeaderTitle = "ファイル",
        .finderDocumentsFoundTemplate = "%@件の書類が見つかりました",
        .finderNoMatchTemplate = "「%@」に一致するファイルはありません",
        .finderLimitedScopeHint =
            "ホームフォルダのみを検索しました · "
            "Mac全体を検索するにはフルディスクアクセスを許可してください",
        .finderRevealInFinder = "Finderに表示",
        .finderSearchAllDocuments = "FinderでMac全体を検索",
        .finderDocumentsFoundSingular = "1件の書類が見つかりました",
        .finderSearchStartFailedMessage = "ファイルを検索できませんでした",
        .finderSearchTimedOutMessage = "検索に通常より時間がかかっています。もう一度お試しください",
        .modelAddMenuItem = "モデルファイルを追加…",
        .modelInstallNotGGUFMessage = "追加できるのは.ggufモデルファイルのみです",
        .modelInstallDuplicateMessage = "同じファイル名のモデルがすでにインストールされています",
        .modelInstallFailedMessage = "モデルファイルをコピーできませんでした",
        .modelCuratedSectionTitle = "おすすめのモデル",
        .modelCuratedInstalledLabel = "インストール済み",
        .modelCuratedNotInstalledMessage = "インストールされていません。インストールしますか？",
        .modelCuratedInstallButtonLabel = "インストール",
        .modelCuratedInstallingLabel = "インストール中…",
        .modelNotInstalledYetLabel = "モデルがまだインストールされていません",
        .modelSwitchFailedMessage = "そのモデルに切り替えられませんでした",
        .modelRemoveMenuItem = "モデルを削除",
        .modelRemoveCurrentlySelectedMessage =
            "このモデルを削除する前に、別のモデルに切り替えてください",
        .modelRemoveFailedMessage = "そのモデルファイルを削除できませんでした",
        .modelRecommendedBadge = "おすすめ",
        .modelInUseBadge = "使用中",
        .modelSelectButtonLabel = "使用",
        .modelCustomFileTrait = "独自のモデルファイル",
        .modelTraitSummaryModel = "Webページや書類を要約",
        .modelTraitFastLight = "高速・軽量",
        .modelTraitMoreAccurate = "より高精度",
        .modelTraitLargerHeavier = "より高精度、ただしサイズが大きく重め",
        .calendarHeaderTitle = "カレンダー",
        .calendarNoEventsMessage = "この期間の予定はありません",
        .calendarEventAddedLabel = "予定を追加しました",
        .calendarOpenCalendarFooter = "カレンダーを開く",
        .calendarTodayLabel = "今日",
        .calendarTomorrowLabel = "明日",
        .calendarDayAfterTomorrowLabel = "明後日",
        .calendarYesterdayLabel = "昨日",
        .calendarThisWeekLabel = "今週",
        .calendarNextWeekLabel = "来週",
        .calendarThisWeekendLabel = "今週末",
        .calendarNextWeekendLabel = "来週末",
        .calendarThisMonthLabel = "今月",
        .calendarNextMonthLabel = "来月",
        .calendarPermissionTitle = "カレンダーへのアクセスが必要です",
        .calendarPermissionMessage =
            "ここに予定を表示するには、Nuvrelにカレンダーの読み取りを許可する必要があります。",
        .calendarAllDayLabel = "終日",
        .permissionGenericTitleTemplate = "%@へのアクセスが必要です",
        .permissionGenericMessageTemplate = "この操作を完了するには、Nuvrelに%@の許可が必要です。",
        .openSystemSettingsButtonLabel = "システム設定を開く",
        .contactsPermissionTitle = "連絡先へのアクセスが必要です",
        .contactsPermissionMessage =
            "メッセージの送信先を探すには、Nuvrelに連絡先の読み取りを許可する必要があります。",
        .automationPermissionTitle = "オートメーションの許可が必要です",
        .automationPermissionMessage =
            "この操作を完了するには、Nuvrelに「メッセージ」/"
            "「ミュージック」の操作を許可する必要があります。",
        .musicHeaderTitle = "ミュージック",
        .musicNowPlayingLabel = "再生中",
        .musicPausedLabel = "一時停止中",
        .musicNoResultsHeaderSubtitle = "結果なし",
        .musicOpenMusicFooter = "ミュージックを開く",
        .musicPlaySimilarFooter = "似た曲を再生",
        .musicNoMatchTemplate = "再生する「%@」が見つかりませんでした",
        .musicAutomationFailedMessage = "ミュージックを操作できませんでした",
        .messageHeaderTitle = "メッセージ",
        .messageDraftReadyLabel = "下書きができました",
        .messageChannelMailLabel = "メール",
        .messageSendButtonLabel = "送信",
        .messageEditButtonLabel = "メッセージを編集",
        .messageDoneEditingButtonLabel = "編集を完了",
        .messageRecipientResolvingLabel = "連絡先を検索中…",
        .messageRecipientMultipleMatchesLabel = "連絡先を選択",
        .messageRecipientNotFoundMessage = "この連絡先が見つかりませんでした",
        .messageRecipientManualPlaceholder = "電話番号またはメールアドレス",
        .messageRecipientUseManualButtonLabel = "使用",
        .messageSendingLabel = "送信中…",
        .messageDeliveredTemplate = "✓ %@に送信しました",
        .messageOpenedInMailTemplate = "%@宛てのメールをメールAppで開きました",
        .messageSendFailedMessage = "メッセージを送信できませんでした",
        .quitMenuItemLabel = "Nuvrelを終了",
        .errorRetryButtonLabel = "再試行",
        .timerHeaderTitle = "タイマー",
        .timerStartedBodyTemplate = "⏱ %1$@のタイマーを開始しました（%2$@に通知）",
        .timerNotificationTitle = "タイマー終了",
        .timerNotificationBodyTemplate = "%@のタイマーが終了しました",
        .notificationsPermissionTitle = "通知の許可が必要です",
        .notificationsPermissionMessage =
            "タイマーの終了をお知らせするには、Nuvrelに通知の送信を許可する必要があります。",
        .remindersPermissionTitle = "リマインダーへのアクセスが必要です",
        .remindersPermissionMessage =
            "リマインダーを追加するには、Nuvrelにリマインダーへのアクセスを許可する必要があります"
            "。",
        .reminderHeaderTitle = "リマインダー",
        .reminderSetWithTimeTemplate = "%@にリマインダーを設定しました",
        .reminderSetNoTimeTemplate = "リマインダーを追加しました",
        .chainHeaderTitle = "複数の操作",
        .chainRunningSubtitleTemplate = "%d件の操作を実行中",
        .chainRunningProgressTemplate = "実行中：%2$d件中%1$d件完了",
        .chainDoneSubtitleTemplate = "%d件の操作が完了しました",
        .chainStepRunningLabel = "実行中…",
        .chainStepNeedsPermissionLabel = "許可が必要",
        .chainStepDoneLabel = "完了",
        .helpHeaderTitle = "できること",
        .helpSubtitle = "やりたいことを普段の言葉で入力して、returnキーを押してください。例：",
        .helpItems =
            {
                "ファイルを探す：「請求書を探して」",
                "アプリやWebサイトを開く：「Safariを開いて」「github.comを開いて」",
                "カレンダー：「明日の予定は？」「明日15時に歯医者の予定を追加して」",
                "リマインダー：「15時に母に電話するってリマインドして」",
                "メモ：「メモ：牛乳を買う」",
                "タイマー：「5分のタイマーをセットして」「タイマーをキャンセル」",
                "メッセージとメール：「田中さんに少し遅れるって送って」",
                "ミュージック：「ジャズを再生して」",
                "天気：「東京の天気」",
                "計算と単位換算：「12 * 7」「100 lb kg」",
                "通貨換算：「100ドルは何円？」",
                "翻訳：「おはようを英語に翻訳して」",
                "書類の要約：「report.pdfを要約して」",
                "ウインドウ：「左半分」「ウインドウを最大化」",
                "Macの操作：「画面をロック」「スクリーンショット」「音量を上げて」",
                "クリップボード履歴：「クリップボード」",
                "ファイル、予定、リマインダー、メモの削除：必ず事前に確認します",
                "複数の操作をまとめて：「それから」でつないで入力します",
                "そのほか：出典付きのWeb回答でお答えします",
            },
        .windowHeaderTitle = "ウインドウ",
        .windowActionLeftHalfLabel = "左半分に配置しました",
        .windowActionRightHalfLabel = "右半分に配置しました",
        .windowActionMaximizeLabel = "最大化しました",
        .windowActionCenterLabel = "中央に配置しました",
        .windowNoTargetMessage =
            "移動するウインドウが見つかりませんでした。配置したいアプリに切り替えてから、もう一度お"
            "試しください",
        .windowMoveFailedMessage =
            "そのウインドウを移動できませんでした。フルスクリーン表示中か、サイズを変更できないウイ"
            "ンドウの可能性があります",
        .windowActionTopHalfLabel = "上半分に配置しました",
        .windowActionBottomHalfLabel = "下半分に配置しました",
        .windowActionQuarterLabel = "画面の4分の1に配置しました",
        .windowActionNextDisplayLabel = "次のディスプレイに移動しました",
        .windowOnlyOneDisplayMessage = "接続されているディスプレイは1台だけです",
        .windowNeedsX11Message = "ウィンドウの操作には X11 セッションが必要です",
        .systemToolMissingTemplate = "このコンピュータでは使用できません: %@",
        .accessibilityPermissionTitle = "アクセシビリティの許可が必要です",
        .accessibilityPermissionMessage =
            "ウインドウを移動したりサイズを変更したりするには、Nuvrelにアクセシビリティの許可が必"
            "要です。",
        .locationPermissionTitle = "位置情報へのアクセスが必要です",
        .locationPermissionMessage =
            "現在地の天気を表示するには、Nuvrelに位置情報へのアクセスを許可する必要があります。都"
            "市名を伝えていただくだけでもかまいません（例：「東京の天気」）。",
        .hotkeyRecordingPrompt = "新しいショートカットを押してください…",
        .hotkeyModifierRequiredMessage = "修飾キー（⌘⌥⌃⇧）を1つ以上含めてください",
        .hotkeyRegistrationFailedMessage =
            "そのショートカットを設定できませんでした。すでに使用されている可能性があります",
        .onboardingWindowTitle = "Nuvrelのセットアップ",
        .onboardingTitle = "Nuvrelへようこそ",
        .onboardingSubtitle =
            "Nuvrelに任せたいことに合わせて、アクセスを許可してください。この設定はシステム設定で"
            "いつでも変更できます。",
        .onboardingFilesTitle = "ファイル",
        .onboardingFilesDescription = "Mac上の書類を名前で探します。",
        .onboardingCalendarTitle = "カレンダー",
        .onboardingCalendarDescription = "予定を確認したり、追加したりします。",
        .onboardingContactsTitle = "連絡先",
        .onboardingContactsDescription = "名前からメッセージの送信先を見つけます。",
        .onboardingMessagesTitle = "メッセージ",
        .onboardingMessagesDescription = "メッセージの下書きを作成し、確認後に送信します。",
        .onboardingMailTitle = "メール",
        .onboardingMailDescription = "連絡先宛てのメールの下書きを開きます。",
        .onboardingMusicTitle = "ミュージック",
        .onboardingMusicDescription = "曲、アルバム、プレイリストを再生します。",
        .onboardingNotificationsTitle = "通知",
        .onboardingNotificationsDescription = "タイマーが終了したときに通知を受け取ります。",
        .onboardingRemindersTitle = "リマインダー",
        .onboardingRemindersDescription = "時刻の指定がなくても、リマインダーを追加できます。",
        .onboardingAllowButtonLabel = "許可",
        .onboardingAllowedLabel = "許可済み",
        .onboardingFooterPrivacyNote =
            "NuvrelはリクエストをこのMac上で理解します。Web検索、天気、通貨換算を除き、入力した内"
            "容がMacの外に送信されることはありません。",
        .onboardingSetUpLaterButtonLabel = "あとで設定",
        .onboardingContinueButtonLabel = "続ける",
        .permissionsSetupMenuItemLabel = "アクセス許可の設定…",
        .settingsTabGeneralLabel = "一般",
        .settingsTabModelLabel = "モデル",
        .settingsTabSearchLabel = "検索",
        .settingsTabPermissionsLabel = "アクセス許可",
        .settingsTabCreditsLabel = "情報",
        .creditsVersionLabel = "バージョン",
        .appUpdateCheckLabel = "アプリの自動アップデート",
        .appUpdateCheckHint =
            "Nuvrelの新しいバージョンが出ていないか毎日確認し、インストールする前にお知らせします"
            "。これはアプリ本体の設定です。モデルファイルには「モデル」タブに専用の設定があります"
            "。",
        .appUpdateCheckNowLabel = "今すぐ確認",
        .creditsReportIssueLabel = "問題を報告",
        .creditsReportIssueHint =
            "宛先が入力された状態でメールAppを開きます。「一般」タブの診断情報を添付していただくと"
            "、とても助かります。",
        .creditsSuggestLabel = "機能を提案",
        .creditsSuggestHint = "「こんなことができたら」というご要望をお聞かせください。",
        .creditsOpenSourceLabel = "オープンソースに関する表記",
        .creditsOpenSourceHint =
            "Nuvrelに含まれる、llama.cppなどのオープンソースソフトウェアのライセンス",
        .creditsModelSourceLabel = "モデル",
        .creditsModelSourceHint =
            "Kestrune-nanoはQwen3.5-0.8B-Base（Apache-2.0）をファインチューニングしたモデルです",
        .creditsPrivacyPolicyLabel = "プライバシーポリシー",
        .creditsThanksNote = "Nuvrelをご利用いただきありがとうございます。",
        .searchTabFallbackChainNotice =
            "Web検索はまずTavilyを試し、次にSearXNGサーバ（設定している場合）、最後にWikipediaを使"
            "います。",
        .searchTabFallbackChainNoticeWithFirecrawl =
            "Web検索はまずTavilyを試し、次にご自身のAPIキーでFirecrawl、続いてSearXNGサーバ（設定し"
            "ている場合）、最後にWikipediaを使います。",
        .searchTabEndpointLabel = "SearXNGエンドポイント",
        .searchTabEndpointHint = "2番目の検索エンジンとして使う、自分でホストするサーバ（任意）",
        .searchTabEndpointPlaceholder = "https://searx.example.com",
        .searchTabEndpointInvalidMessage =
            "有効なhttp://またはhttps://のアドレスを入力してください",
        .searchTabEndpointAppliesNextLaunchNotice = "変更は次回Nuvrelを起動したときに反映されます",
        .searchTabFirecrawlLabel = "Firecrawl APIキー（任意）",
        .searchTabFirecrawlHint =
            "ご自身のAPIキーを使って、Firecrawlを第2段階の予備の検索エンジンとして追加します。",
        .searchTabFirecrawlPlaceholderEmpty = "Firecrawl APIキーをペースト",
        .searchTabFirecrawlPlaceholderSaved = "●●●● 保存済み",
        .permissionsTabReopenButtonLabel = "アクセス許可の設定を見直す",
        .permissionsTabSummaryTitle = "Nuvrelがアクセスできる項目",
        .permissionsTabNotGrantedLabel = "未許可",
        .calculatorHeaderTitle = "計算機",
        .calculatorResultSubtitle = "計算結果",
        .currencyHeaderTitle = "通貨換算",
        .currencyResultSubtitle = "最新の為替レート",
        .currencyNetworkFailureMessage = "インターネット接続を確認してください",
        .weatherHeaderTitle = "天気",
        .weatherResultSubtitle = "現在の天気",
        .weatherNetworkFailureMessage = "インターネット接続を確認してください",
        .weatherHighLabel = "最高",
        .weatherLowLabel = "最低",
        .weatherSourceAppleLabel = "気象データ提供：Apple Weather",
        .weatherSourceOpenMeteoLabel = "気象データ提供：Open-Meteo",
        .weatherCurrentLocationLabel = "現在地",
        .weatherLocationUnavailableMessage =
            "現在地を特定できませんでした。代わりに都市名を指定してください（例：「東京の天気」）"
            "。",
        .appLaunchHeaderTitle = "アプリの起動",
        .appLaunchedTemplate = "%@を開きました",
        .documentSummaryHeaderTitle = "書類の要約",
        .documentSummarizeUnreadableMessage =
            "そのファイルの内容を読み取れませんでした。サポートされていない形式の可能性があります"
            "。",
        .documentSummarizeFailedMessage = "そのファイルを要約できませんでした。",
        .systemCommandHeaderTitle = "システム",
        .clipboardHistoryHeaderTitle = "クリップボード履歴",
        .deleteFileHeaderTitle = "ファイルを削除",
        .deleteFileConfirmMessageTemplate = "「%@」を削除しますか？ゴミ箱に移動されます。",
        .deleteFileConfirmButtonLabel = "削除",
        .deleteFileCancelButtonLabel = "キャンセル",
        .deleteFileDeletingLabel = "削除中…",
        .deleteFileDeletedTemplate = "「%@」をゴミ箱に移動しました",
        .deleteFileFailedMessage = "そのファイルを削除できませんでした",
        .networkActivitySectionTitle = "ネットワークアクティビティ",
        .networkActivitySummaryTemplate = "過去24時間の外部へのリクエスト：%@件",
        .networkActivityOfflineMessage =
            "過去24時間の外部へのリクエスト：0件。Nuvrelは完全にオフラインで動作しました",
        .networkActivitySummaryAtCapTemplate =
            "過去24時間の外部へのリクエスト：%@件以上（保存されるのは最新の%@件のみ）",
        .networkActivityRevealLogLabel = "ログファイルをFinderに表示",
        .networkActivityExplainer =
            "Macの外に送信されるリクエストは、すべてホスト名と目的とともにここに表示されます。入力"
            "した内容が記録されることはありません。",
        .networkActivityLocalhostNote =
            "デバイス上のモデルとの通信はMac内で完結するため、表示されません。",
        .networkActivityNoEntriesLabel = "ネットワークアクティビティはまだ記録されていません",
        .networkActivityRecentLabel = "最近のアクティビティ",
        .networkActivityPurposeWebSearchLabel = "Web検索",
        .networkActivityPurposeWeatherLabel = "天気",
        .networkActivityPurposeCurrencyLabel = "通貨",
        .networkActivityPurposeModelDownloadLabel = "モデルのダウンロード",
        .networkActivityPurposeWikipediaLabel = "Wikipedia",
        .networkActivityPurposeModelUpdateCheckLabel = "モデルのアップデート確認",
        .networkActivityPurposeGeocodingLabel = "位置情報の検索",
        .networkActivityPurposeAppUpdateCheckLabel = "アプリのアップデート確認",
        .modelReadyNotificationTitle = "Nuvrelの準備ができました",
        .modelReadyNotificationBodyTemplate = "%@を押して使い始めましょう",
        .firstRunAhaCardTitle = "最初のリクエストを試してみましょう",
        .firstRunAhaCardQuery = "東京の天気",
        .diagnosticsButtonLabel = "診断情報をコピー",
        .diagnosticsButtonHint =
            "問題が起きた場合は、報告の際にこれをペーストしてください。検索内容、クリップボード、フ"
            "ァイル名は一切含まれません。",
        .diagnosticsCopiedFeedback = "コピーしました",
        .diagnosticsReportTitle = "Nuvrel診断レポート",
        .diagnosticsPrivacyNotice =
            "このレポートに個人的な内容は含まれません。検索クエリ、クリップボードの内容、ファイル名"
            "は含まれていません。",
        .diagnosticsGeneratedAtLabel = "作成日時",
        .diagnosticsSectionSystem = "システム",
        .diagnosticsAppVersionLabel = "アプリのバージョン",
        .diagnosticsOSVersionLabel = "macOSのバージョン",
        .diagnosticsChipLabel = "チップ",
        .diagnosticsChipAppleSiliconValue = "Appleシリコン（arm64）を確認済み",
        .diagnosticsChipNotAppleSiliconValue = "arm64ではありません",
        .diagnosticsRAMLabel = "メモリ総容量",
        .diagnosticsSectionModel = "モデルの状態",
        .diagnosticsInstalledModelsLabel = "インストール済みのモデル",
        .diagnosticsNoModelsInstalledValue = "インストールされていません",
        .diagnosticsSelectedModelLabel = "選択中のモデル",
        .diagnosticsModelsDirectoryLabel = "モデルのディレクトリ",
        .diagnosticsSectionServer = "llama-serverの状態",
        .diagnosticsServerBinaryLabel = "サーババイナリ",
        .diagnosticsServerBinaryFoundTemplate = "%1$@：%2$@",
        .diagnosticsServerBinaryKindBundled = "アプリに同梱",
        .diagnosticsServerBinaryKindHomebrew = "Homebrew",
        .diagnosticsServerBinaryKindPath = "$PATH上で検出",
        .diagnosticsServerBinaryNotFoundValue = "見つかりません",
        .diagnosticsPortRouterLabel = "ポート8765（ルーター）",
        .diagnosticsPortSummaryLabel = "ポート8766（要約）",
        .diagnosticsPortHealthyValue = "応答あり",
        .diagnosticsPortUnhealthyValue = "応答なし",
        .diagnosticsRunningServerPIDsLabel = "実行中のサーバプロセス",
        .diagnosticsNoServerRunningValue = "実行中のものはありません",
        .diagnosticsSectionNetwork = "最近のネットワークアクティビティ（直近10件）",
        .diagnosticsNoNetworkActivityValue = "最近のネットワークアクティビティはありません",
        .diagnosticsSectionPermissions = "アクセス許可の状態",
        .diagnosticsAccessibilityLabel = "アクセシビリティ",
        .diagnosticsNotificationsLabel = "通知",
        .diagnosticsCheckFailedTemplate = "確認に失敗しました - %@",
        .noteHeaderTitle = "メモ",
        .noteSavedLabel = "メモに保存しました",
        .noteSaveFailedMessage = "メモを保存できませんでした",
        .translateHeaderTitle = "翻訳",
        .translateTranslatedByTemplate = "%@による翻訳",
        .translateFailedMessage = "翻訳できませんでした。",
        .slotNameRecipient = "送る相手",
        .slotNameBody = "伝える内容",
        .slotNameContent = "メモする内容",
        .messageSendExampleRecovery = "例：「田中さんに少し遅れるって送って」",
        .helpHintRecovery = "「ヘルプ」と入力すると、できることを例と一緒に確認できます。",
        .helpMenuItemLabel = "ヘルプ",
        .genericErrorMessage = "リクエストを完了できませんでした。",
        .messageSendFailedRecovery =
            "「メッセージ」にサインインしていることを確認してから、もう一度お試しください。",
        .automationFailedRecovery =
            "一度アプリを開いて設定が済んでいることを確認してから、もう一度お試しください。",
        .webAnswerNoResultsMessage =
            "Webの検索結果が見つかりませんでした。別の言葉でお試しください。",
        .netlogLocalCallsNote =
            "ローカルのモデルサーバーとの通信はこのコンピューター内で完結するため、表示されません"
            "。",
        .netlogLogFileTemplate = "ログファイル：%@",
        .confirmPlanPrompt = "実行しますか？ [y/N] ",
        .confirmDeleteRowPromptTemplate = "「%@」を削除しますか？ [y/N] ",
        .confirmNotCarriedOutMessage =
            "何も実行していません。ターミナルで確認するか、--yes を付けて再実行してください。",
        .notificationServiceUnavailableMessage = "ここでは通知を表示できません",
        .notificationServiceUnavailableRecovery =
            "タイマーには通知サービス（D-Bus "
            "org.freedesktop.Notifications）のあるデスクトップセッションが必要です。",
        .modelDownloadFailedMessage = "モデルをダウンロードできませんでした",
        .modelChecksumMismatchTemplate =
            "ダウンロードしたファイルのチェックサムが一致しないため削除しました（期待値 %1$@、実際 "
            "%2$@）",
        .modelNotEnoughSpaceTemplate =
            "ディスクの空き容量が足りません：モデルにはあと %1$@ 必要ですが、空きは %2$@ です",
        .modelInstallHintLine =
            "モデルをインストールするには次を実行してください：nuvrel models install",
        .modelInstalledTemplate = "%@ をインストールしました",
        .modelInstallStoppedMessage =
            "中断しました。受信済みの部分は残してあるので、同じインストールをもう一度実行すると続き"
            "から再開します。",
        .modelResumingTemplate = "再開します：%@ ダウンロード済み",
        .modelUnknownNameTemplate =
            "「%@」というモデルはありません。名前は「nuvrel models」で確認できます",
        .modelNowUsingTemplate = "%@ を使用します",
        .modelStillUsingTemplate = "引き続き %@ を使用します",
        .modelRemovedTemplate = "%@ を削除しました",
        .modelRemoveForceHint = "それでも削除するには --force を付けてください。",
        .modelFileNotInstalledTemplate = "%@ はインストールされていません",
        .modelUpdateCheckFailedMessage = "モデルの更新を確認できませんでした",
        .modelUpdateInstallHintTemplate = "インストールするには：nuvrel models install %@",
        .modelRoleRouterLabel = "リクエストの理解",
        .modelRoleSummaryLabel = "要約",
        .messageNoPhoneDeviceMessage = "KDE Connectでペアリングされ接続可能な電話がありません",
        .messageNoMailClientMessage = "メールを書くためのメールAppが設定されていません",
        .musicNoPlayerMessage = "実行中のメディアプレーヤーがありません",
        .musicCannotSearchMessage = "このプレーヤーは音楽を検索できません",
        .messageRecipientAmbiguousTemplate = "複数の連絡先が一致します：%@",
        .messageRecipientChoicePromptTemplate = "どの連絡先に送りますか？ [1–%@] ",
        .settingsUnknownKeyTemplate =
            "不明な設定「%@」です（nuvrel settings ですべて表示できます）",
        .settingsInvalidValueTemplate = "「%1$@」は %2$@ に使えない値です",
        .keyStoreUnavailableMessage =
            "キーストア（GNOME Keyring または "
            "KWallet）が応答しないため、キーを保存できませんでした",
        .diagnosticsPermissionAvailableValue = "利用可能",
        .diagnosticsPermissionUnavailableValue = "利用不可",
        .diagnosticsNoClipboardMessage =
            "クリップボードツール（wl-"
            "copy、xclip、xsel）が見つからないため、レポートは表示のみです",
    };
    return value;
}

}  // namespace nuvrel::core
