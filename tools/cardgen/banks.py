"""What invented bank cards are made of: banks, syllables of names, words, colours.

Data only. Bank names are plain text; numbers, holders and designs belong to nobody.
"""

# Chinese name -> (English name, abbreviation) as printed; "" if it has none.
BANKS = {
    "中国工商银行": ("INDUSTRIAL AND COMMERCIAL BANK OF CHINA", "ICBC"),
    "中国建设银行": ("CHINA CONSTRUCTION BANK", "CCB"),
    "中国农业银行": ("AGRICULTURAL BANK OF CHINA", "ABC"),
    "中国银行": ("BANK OF CHINA", "BOC"),
    "交通银行": ("BANK OF COMMUNICATIONS", "BOCOM"),
    "招商银行": ("CHINA MERCHANTS BANK", "CMB"),
    "上海浦东发展银行": ("SHANGHAI PUDONG DEVELOPMENT BANK", "SPDB"),
    "中信银行": ("CHINA CITIC BANK", "CITIC"),
    "中国光大银行": ("CHINA EVERBRIGHT BANK", "CEB"),
    "华夏银行": ("HUAXIA BANK", ""),
    "中国民生银行": ("CHINA MINSHENG BANK", "CMBC"),
    "广发银行": ("CHINA GUANGFA BANK", "CGB"),
    "兴业银行": ("INDUSTRIAL BANK", "CIB"),
    "平安银行": ("PING AN BANK", "PAB"),
    "中国邮政储蓄银行": ("POSTAL SAVINGS BANK OF CHINA", "PSBC"),
    "北京银行": ("BANK OF BEIJING", ""),
    "上海银行": ("BANK OF SHANGHAI", ""),
    "宁波银行": ("BANK OF NINGBO", ""),
    "农村商业银行": ("", ""),
    "南京银行": ("BANK OF NANJING", ""),
    "浙商银行": ("CHINA ZHESHANG BANK", ""),
    "渤海银行": ("BOHAI BANK", ""),
    "恒丰银行": ("HENGFENG BANK", ""),
    "汇丰银行": ("HSBC", ""),
    "渣打银行": ("Standard Chartered", ""),
    "花旗银行": ("Citibank", ""),
}

# Type -> its name in records, and the words by which cards call themselves so.
TYPE_NAMES = {"debit": "借记卡", "credit": "信用卡", "prepaid": "预付卡"}
TYPE_WORDS = {
    "debit": ("借记卡", "储蓄卡", "DEBIT", "DEBIT CARD", "借记卡 DEBIT", "Debit"),
    "credit": ("信用卡", "CREDIT CARD", "CREDIT", "信用卡 CREDIT CARD", "贷记卡", "GOLD CREDIT CARD", "Credit Card"),
    "prepaid": ("预付卡", "礼品卡"),
}
# Words that say nothing about the type.
CLASS_WORDS = ("金卡", "白金卡", "GOLD", "PLATINUM", "CLASSIC", "普卡")
HOTLINES = ("服务热线 {}", "24小时服务热线：{}", "客服热线：{}", "客户服务 {}", "{}")
# Service numbers: five digits, or ten in a range that is not given out.
SHORT_HOTLINES = ("95542", "95547", "95564", "95570", "95573", "95583")
LONG_HOTLINE_PREFIX = "400-2"

SURNAMES = (
    "WANG", "LI", "ZHANG", "LIU", "CHEN", "YANG", "ZHAO", "HUANG", "ZHOU", "WU", "XU", "SUN", "HU", "ZHU", "GAO",
    "LIN", "HE", "GUO", "MA", "LUO", "LIANG", "SONG", "ZHENG", "XIE", "HAN", "TANG", "FENG", "YU", "DONG", "XIAO",
    "CHENG", "CAO", "YUAN", "DENG", "FU", "SHEN", "ZENG", "PENG", "LV", "SU", "JIANG", "CAI", "JIA", "DING", "WEI",
    "XUE", "YE", "YAN", "PAN", "DU", "DAI", "XIA", "ZHONG", "TIAN", "REN", "FAN", "FANG", "SHI", "YAO", "TAN", "LIAO",
    "OUYANG", "SITU", "SHANGGUAN",
)
SYLLABLES = (
    "WEI", "FANG", "NA", "MIN", "JING", "LI", "QIANG", "LEI", "JUN", "YANG", "YONG", "YAN", "JIE", "TAO", "MING",
    "CHAO", "XIA", "GANG", "GUI", "HUA", "FEI", "YU", "XIN", "BO", "NING", "HAO", "KAI", "JIAN", "XIAO", "ZHI", "GUO",
    "HAI", "CHUN", "XUE", "MEI", "LAN", "YUN", "QIN", "SHU", "WEN", "BIN", "RUI", "JIA", "YI", "TING", "SI", "ZE",
    "CHEN", "HONG", "DAN", "LING", "QING", "ZHEN", "RONG", "XIANG", "DONG", "SHENG", "LIN", "YUE", "AN", "PENG",
)

# Ground -> (colours of the wash, tone of what is printed on it).
GROUNDS = {
    "white": (((246, 247, 249), (232, 236, 240), (244, 245, 247)), "dark"),
    "pale blue": (((214, 230, 244), (236, 243, 249), (196, 219, 240)), "dark"),
    "ivory": (((246, 240, 224), (236, 226, 200), (248, 243, 230)), "dark"),
    "pale green": (((214, 232, 216), (236, 244, 234), (200, 224, 208)), "dark"),
    "champagne": (((226, 206, 160), (240, 226, 190), (206, 180, 126)), "dark"),
    "gold": (((176, 134, 62), (214, 178, 104), (160, 118, 48)), "dark"),
    "silver grey": (((166, 170, 176), (204, 207, 212), (150, 154, 162)), "dark"),
    "blue": (((18, 62, 130), (40, 104, 178), (14, 48, 108)), "light"),
    "navy": (((16, 26, 56), (34, 52, 96), (12, 20, 44)), "light"),
    "red": (((150, 20, 32), (196, 48, 50), (120, 12, 26)), "light"),
    "wine": (((88, 14, 34), (128, 34, 54), (66, 10, 28)), "light"),
    "green": (((10, 92, 66), (34, 132, 92), (8, 72, 54)), "light"),
    "teal": (((12, 96, 108), (40, 140, 148), (10, 74, 88)), "light"),
    "purple": (((70, 36, 110), (110, 70, 150), (52, 24, 88)), "light"),
    "black": (((22, 22, 24), (48, 48, 52), (14, 14, 16)), "light"),
    "graphite": (((54, 58, 64), (86, 90, 98), (40, 42, 48)), "light"),
}
# Inks by tone of print.
INKS = {
    "dark": ((24, 24, 28), (20, 34, 78), (70, 20, 24), (40, 40, 44)),
    "light": ((250, 250, 250), (236, 238, 242), (244, 228, 176), (226, 230, 236)),
}
