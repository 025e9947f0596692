// SPDX-License-Identifier: Apache-2.0
#include "stagewords.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! The lines that stand for the words of a command. */
class StageWordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests_data();
    void requests();
};

void StageWordsTest::requests_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char *words, const char *line) {
        QTest::addRow("%s", words) << QString::fromLatin1(words) << QByteArray(line).replace('\'', '"');
    };
    row("act radio-off", "{'event':'radio-off'}");
    row("act vanish interface=eth0", "{'event':'vanish','interface':'eth0'}");
    row("act vanish interface=", "{'event':'vanish','interface':''}");
    row("act no-reply performs=true", "{'fault':'no-reply','performs':true}");
    row("act no-reply performs=false", "{'fault':'no-reply','performs':false}");
    row("act no-reply performs=perhaps", "{'fault':'no-reply','performs':'perhaps'}");
    row("act late delay=500", "{'delay':500,'fault':'late'}");
    row("act die back_after=5", "{'back_after':5,'fault':'die'}");
    row("act refuse err=16 skip=1 times=2", "{'err':16,'fault':'refuse','skip':1,'times':2}");
    row("act refuse err=x", "{'err':'x','fault':'refuse'}");
    row("act double", "{'fault':'double'}");
    row("act ignore", "{'fault':'ignore'}");
    row("act answer dat=7 err:='0'", "{'dat':'7','err':'0','fault':'answer'}");
    row("act dropped reason=6", "{'event':'dropped','reason':6}");
    row("act signal signal_level=-82", "{'event':'signal','signal_level':-82}");
    row("act wrong-key ssid=1234", "{'event':'wrong-key','ssid':'1234'}");
    row("act wrong-key ssid=a=b:=c", "{'event':'wrong-key','ssid':'a=b:=c'}");
    row("act priority order:=['a','b']", "{'event':'priority','order':['a','b']}");
    row("act set attributes:={'a':null}", "{'attributes':{'a':null},'event':'set'}");
    row("act {'event':'radio-off'}", "{'event':'radio-off'}");
    row("act {", "{");
    row("act {\n\r}", "{  }");
    row("look", "{'look':'all'}");
    row("look faults", "{'look':'faults'}");
    row("look requests since=3", "{'look':'requests','since':3}");
    row("look since=3", "{'look':'all','since':3}");
    row("pass 1000", "{'pass':1000}");
    row("pass soon", "{'pass':'soon'}");
}

void StageWordsTest::requests()
{
    QFETCH(QString, words);
    QString error = QStringLiteral("from before");
    QTEST(StageWords::request(words.replace(QLatin1Char('\''), QLatin1Char('"')).split(QLatin1Char(' ')), &error),
          "line");
    QCOMPARE(error, QString());
}

QTEST_GUILESS_MAIN(StageWordsTest)
#include "tst_stagewords.moc"
