"""What recognisers write where nobody speaks, learnt from the subtitles they were trained with.

All are compared without case, accents and punctuation, whatever the language is said to be.
"""

# Never heard in a conversation as the only words of a chunk.
PHRASES = {
    "en": (
        "Thanks for watching", "Thank you for watching", "Thank you so much for watching",
        "Thanks for watching and see you next time", "Thank you for watching this video",
        "Thanks for listening", "Please subscribe", "Please subscribe to my channel",
        "Please like and subscribe", "Like and subscribe", "Don't forget to subscribe",
        "Subtitles by the Amara.org community", "Blank audio", "See you in the next video",
    ),
    "de": (
        "Vielen Dank fürs Zuschauen", "Danke fürs Zuschauen", "Vielen Dank für's Zuschauen",
        "Untertitelung des ZDF, 2020", "Untertitel im Auftrag des ZDF, 2017",
        "Untertitel der Amara.org-Community", "Copyright WDR 2021", "Copyright WDR 2020",
        "Untertitelung. BR 2018", "SWR 2020", "SWR 2021",
    ),
    "fr": (
        "Merci d'avoir regardé cette vidéo", "Merci d'avoir regardé", "Sous-titrage ST' 501",
        "Sous-titrage Société Radio-Canada", "Abonnez-vous", "N'oubliez pas de vous abonner",
        "Sous-titres réalisés par la communauté d'Amara.org",
    ),
    "es": (
        "Gracias por ver el video", "Gracias por ver", "Suscríbete al canal", "Suscríbete",
        "Subtítulos realizados por la comunidad de Amara.org",
    ),
    "it": (
        "Sottotitoli creati dalla comunità Amara.org", "Grazie per aver guardato il video",
        "Grazie per la visione", "Iscrivetevi al canale",
    ),
    "pt": (
        "Legendas pela comunidade Amara.org", "Obrigado por assistir", "Inscreva-se no canal",
    ),
    "nl": (
        "Ondertitels ingediend door de Amara.org gemeenschap", "Bedankt voor het kijken",
        "TV GELDERLAND 2021", "Abonneer je op ons kanaal",
    ),
    "pl": (
        "Napisy stworzone przez społeczność Amara.org", "Dziękuję za oglądanie",
        "Dziękuję za uwagę i zapraszam do subskrypcji",
    ),
    "tr": (
        "Altyazı M.K.", "Abone olmayı unutmayın", "İzlediğiniz için teşekkür ederim",
        "İzlediğiniz için teşekkürler",
    ),
    "ru": (
        "Продолжение следует", "Спасибо за просмотр", "Спасибо за внимание и просмотр",
        "Подписывайтесь на канал", "Субтитры сделал DimaTorzok", "Субтитры создавал DimaTorzok",
    ),
    "ja": (
        "ご視聴ありがとうございました", "ご視聴ありがとうございます", "チャンネル登録お願いします",
        "チャンネル登録をお願いします", "最後までご視聴ありがとうございました",
    ),
    "ko": (
        "시청해주셔서 감사합니다", "시청해 주셔서 감사합니다", "구독과 좋아요 부탁드립니다",
        "영상 시청해주셔서 감사합니다",
    ),
    "zh": (
        "请不吝点赞 订阅 转发 打赏支持明镜与点点栏目", "優優獨播劇場", "谢谢观看", "謝謝觀看",
        "感谢观看", "感謝觀看", "谢谢大家观看", "优优独播剧场——YoYo Television Series Exclusive",
    ),
    "ar": ("اشتركوا في القناة", "ترجمة نانسي قنقر", "شكرا للمشاهدة"),
    "uk": ("Дякую за перегляд", "Дякуємо за перегляд"),
    "cs": ("Titulky vytvořil JohnyX", "Děkuji za sledování"),
    "sv": ("Tack för att ni tittade", "Textning Stina Hedin", "Undertexter från Amara.org-gemenskapen"),
}  # fmt: skip

# Often said, and as often invented: they depend on what else speaks for them.
POLITENESS = (
    "Thank you", "Thank you very much", "Thank you so much", "Thanks", "you", "Bye", "Bye bye",
    "Goodbye", "Okay", "Oh", "Yeah", "Hmm", "Mm", "Mhm", "Uh", "Um", "So", "Hello", "I'm sorry",
    "The end", "Good night",
    "Danke", "Danke schön", "Vielen Dank", "Tschüss", "Bis zum nächsten Mal", "Ja", "Hallo", "Amen",
    "Merci", "Merci beaucoup", "Au revoir", "À bientôt", "Oui",
    "Gracias", "Muchas gracias", "Adiós", "Hasta luego", "Sí",
    "Grazie", "Grazie mille", "Ciao", "Grazie a tutti",
    "Obrigado", "Obrigada", "Muito obrigado", "Tchau", "Até mais",
    "Dank je wel", "Dank u wel", "Bedankt", "Doei", "Dziękuję", "Dziękuję bardzo", "Do widzenia",
    "Teşekkürler", "Teşekkür ederim", "Görüşürüz", "Спасибо", "Спасибо большое", "До свидания", "Пока",
    "Дякую", "Děkuji", "Tack", "Tack så mycket", "Takk", "Tak", "Kiitos", "Hej då", "شكرا",
    "ありがとうございました", "ありがとうございます", "ありがとう", "お疲れ様でした", "おやすみなさい", "はい",
    "감사합니다", "고맙습니다", "안녕히 계세요", "네", "谢谢", "謝謝", "谢谢大家", "再见", "拜拜",
)  # fmt: skip

# Whose subtitles they are: anywhere in a short text.
CREDITS = (
    "amara org", "amaraorg", "untertitelung des zdf", "untertitelung im auftrag", "im auftrag des zdf",
    "im auftrag von ard", "untertitelung br", "copyright wdr", "copyright swr", "sous titrage st",
    "societe radio canada", "dimatorzok", "редактор субтитров", "корректор а", "明镜与点点",
    "明鏡與點點", "優優獨播劇場", "优优独播剧场", "字幕志愿者", "字幕由", "字幕by", "자막 제공",
)  # fmt: skip

# The same, where a short text begins with them: within a sentence people say these words.
CREDIT_BEGINNINGS = (
    "subtitles by", "subtitled by", "captions by", "captioned by", "captioning by", "transcript by",
    "transcription by", "untertitel von", "untertitel im auftrag", "untertitelung", "untertitel der amara",
    "sous titres par", "sous titres realises", "sous titres fait", "sous titrage",
    "subtitulos por", "subtitulos realizados", "subtitulado por", "sottotitoli creati",
    "sottotitoli a cura", "sottotitoli e revisione", "legendas pela", "legendas por",
    "ondertiteld door", "ondertiteling door", "ondertitels ingediend", "napisy stworzone",
    "napisy wykonane", "altyazı m k", "altyazi m k", "субтитры сделал", "субтитры создавал",
    "субтитры подогнал", "субтитры делал", "субтитры от", "字幕 by", "undertexter av", "undertexter fran",
    "titulky vytvoril",
)  # fmt: skip
