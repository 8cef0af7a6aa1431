"""What lifelike cards say besides their number: banks as they write themselves, and the small print.

Data only. The places in front of a rural bank's or cooperative's name are invented.
"""

# Simplified -> traditional characters, as some banks write their names.
TRADITIONAL = str.maketrans("银国农业设发东华开关点号储邮兴广联丰实万长", "銀國農業設發東華開關點號儲郵興廣聯豐實萬長")
# These banks' names have no other characters that differ.
WRITTEN_TRADITIONALLY = ("中国工商银行", "中国建设银行", "中国农业银行", "中国银行", "交通银行", "招商银行", "中国光大银行",
                         "华夏银行", "中国民生银行", "广发银行", "兴业银行", "平安银行", "北京银行", "上海银行", "农村商业银行")
PLACES = ("云山", "清河", "临海", "江夏", "松江", "青莱", "庐州", "泰安", "沅陵", "雁北", "锦屏", "南溪")
RURAL_BANK = "农村商业银行"
# Credit cooperatives, which records name as they are printed.
COOPERATIVES = ("{}农村信用社", "{}农村信用合作社", "{}农村信用合作联社", "{}省农村信用社联合社")
COOPERATIVE_ENGLISH = "RURAL CREDIT COOPERATIVES"

# How often a bank's name takes each form.
FORMS = {"chinese": 30, "both": 30, "traditional": 16, "abbreviation": 14, "abbreviation above": 6, "english": 4}

# First digits by type, as issuers of the domestic scheme and of others have them, and how often each length.
PREFIXES = {
    "debit": ("6212", "6214", "6216", "6217", "6221", "6222", "6227", "6228", "6230", "6231", "6236", "6013"),
    "credit": ("6225", "6226", "6222", "6253", "6258", "6259", "6282", "6283", "62"),
    "credit 4": ("4033", "4392", "4518", "4563", "4682", "43", "45"),
    "credit 5": ("51", "5187", "5200", "5240", "5309", "5400", "5490", "55"),
    "prepaid": ("6210", "6233"),
}
# Kind of card -> (type, length, weight).
CARDS = {
    "long debit": ("debit", 19, 44), "debit": ("debit", 16, 8), "credit": ("credit", 16, 24),
    "credit 4": ("credit", 16, 10), "credit 5": ("credit", 16, 10), "prepaid": ("prepaid", 16, 4),
}
# Lengths of a number's groups -> weight, by the number's length.
LAYOUTS = {16: {(4, 4, 4, 4): 1},
           19: {(4, 4, 4, 4, 3): 45, (6, 13): 25, (5, 4, 5, 5): 10, (19,): 20}}

# What stands in front of or above the date.
DATE_LABELS = (("VALID", "THRU"), ("VALID THRU",), ("GOOD", "THRU"), ("VALID", "DATES"), ("有效期至",),
               ("有效期", "VALID THRU"), ("EXPIRES", "END"))
MONTH_YEAR = ("MONTH/YEAR", "MONTH/YEAR 月/年", "月/年 MONTH/YEAR", "MM/YY")
MEMBER_LABELS = (("MEMBER", "SINCE"), ("MEMBER SINCE",))
SMALL_PRINT = ("ELECTRONIC USE ONLY", "ATM", "闪付", "仅限电子设备使用", "AUTHORIZED SIGNATURE", "持卡人", "IC", "芯片卡",
               "公务卡", "社会保障卡专用", "联名卡", "World", "CASH", "理财卡", "惠民卡", "福农卡", "24")
SCHEMES = ("UnionPay", "UnionPay 银联", "银联", "银联 UnionPay")
